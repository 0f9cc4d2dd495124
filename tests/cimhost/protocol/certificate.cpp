#include "certificate.h"

#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>

namespace cimhost::testing_support {

void makeCertificate(const std::filesystem::path& certificateFile, const std::filesystem::path& keyFile,
                     long beginsIn) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(X509_new(), X509_free);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), beginsIn);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), beginsIn + 3600);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME* name = X509_get_subject_name(certificate.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1,
                               0);
    X509_set_issuer_name(certificate.get(), name);
    X509_sign(certificate.get(), key.get(), EVP_sha256());
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> out(BIO_new_file(certificateFile.c_str(), "w"), BIO_free_all);
    PEM_write_bio_X509(out.get(), certificate.get());
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> keyOut(BIO_new_file(keyFile.c_str(), "w"), BIO_free_all);
    PEM_write_bio_PrivateKey(keyOut.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
}

} // namespace cimhost::testing_support
