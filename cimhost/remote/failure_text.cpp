#include "cimhost/remote/failure_text.h"

#include "cimhost/http/message.h"
#include "cimhost/model/printable.h"

#include <algorithm>
#include <curl/curl.h>
#include <iterator>
#include <openssl/x509_vfy.h>
#include <sstream>
#include <string_view>
#include <system_error>

namespace cimhost::remote {

namespace {

constexpr std::size_t longestDetail = 160;

std::string shortened(std::string_view text) {
    text = text.substr(0, text.find_first_of("\r\n"));
    return printable(text.substr(0, longestDetail));
}

std::string otherScheme(const http::Url& server) {
    return (server.isSecure ? "http://" : "https://") + server.authority();
}

std::string inBrackets(const std::string& detail) { return detail.empty() ? "" : " (" + detail + ")"; }

std::string unknownHost(const http::Url& server, const TransferFacts&) {
    return "no host of the name " + server.host + " is known: check the URL";
}

std::string noConnection(const http::Url& server, const TransferFacts& facts) {
    const std::string reason =
        facts.systemError != 0 ? std::generic_category().message(facts.systemError) : shortened(facts.detail);
    return "no connection to port " + server.port + inBrackets(reason) +
           ": check that the CIM server runs, and its port; 5988 is usual for http and 5989 for https";
}

std::string tooLate(const http::Url&, const TransferFacts& facts) {
    std::ostringstream seconds;
    seconds << static_cast<double>(facts.allowed.count()) / 1000;
    return "no whole answer within " + seconds.str() + " s: --timeout allows more";
}

std::string noTls(const http::Url& server, const TransferFacts& facts) {
    return "TLS does not come about" + inBrackets(shortened(facts.detail)) + ": if that port speaks plain HTTP, try " +
           otherScheme(server);
}

std::string badCertificate(const http::Url&, const TransferFacts& facts) {
    const std::string reason =
        facts.certificate != X509_V_OK ? X509_verify_cert_error_string(facts.certificate) : shortened(facts.detail);
    return "its certificate is not accepted" + inBrackets(reason) +
           ": --cacert FILE says whose certificates to believe, --no-verify believes everybody";
}

std::string noHttp(const http::Url& server, const TransferFacts& facts) {
    if (server.isSecure)
        return "it does not answer with HTTP" + inBrackets(shortened(facts.detail)) + ": check the port";
    return "it does not answer with HTTP" + inBrackets(shortened(facts.detail)) + ": if that port speaks TLS, try " +
           otherScheme(server);
}

std::string closedEarly(const http::Url&, const TransferFacts&) {
    return "it closed the connection in the middle of its answer: its log may tell why";
}

struct TransferRow {
    CURLcode code;
    std::string (*text)(const http::Url& server, const TransferFacts& facts);
};

constexpr TransferRow transferRows[] = {
    {CURLE_COULDNT_RESOLVE_HOST, unknownHost},
    {CURLE_COULDNT_CONNECT, noConnection},
    {CURLE_OPERATION_TIMEDOUT, tooLate},
    {CURLE_SSL_CONNECT_ERROR, noTls},
    {CURLE_PEER_FAILED_VERIFICATION, badCertificate},
    {CURLE_SSL_ISSUER_ERROR, badCertificate},
    {CURLE_UNSUPPORTED_PROTOCOL, noHttp}, // HTTP/0.9, as whatever is no HTTP looks like
    {CURLE_WEIRD_SERVER_REPLY, noHttp},
    {CURLE_GOT_NOTHING, noHttp},
    {CURLE_RECV_ERROR, noHttp},
    {CURLE_SEND_ERROR, noHttp},
    {CURLE_PARTIAL_FILE, closedEarly},
};

std::string wantsUser(const HttpFacts& facts) {
    return facts.hasUser ? "it does not take this user and password (HTTP 401)"
                         : "it asks for a user (HTTP 401): give --user NAME, CIMHOST_USER or --netrc FILE";
}

std::string forbids(const HttpFacts& facts) {
    return "it forbids this (HTTP 403" + (facts.words.empty() ? "" : ": " + facts.words) +
           "): ask as another user, or from another machine";
}

std::string hasNothingThere(const HttpFacts&) {
    return "it has nothing at this path (HTTP 404): check port and path, which is /cimom unless the URL names one";
}

std::string otherName(const HttpFacts&) {
    return "it does not go by this name (HTTP 421): ask it by its own name, or add this one where it is started";
}

std::string tooManyGuesses(const HttpFacts&) {
    return "it was told too many wrong passwords (HTTP 429): wait a minute";
}

std::string isBusy(const HttpFacts&) { return "it is too busy or not up yet (HTTP 503): try again later"; }

struct HttpRow {
    unsigned status;
    std::string (*text)(const HttpFacts& facts);
};

constexpr HttpRow httpRows[] = {
    {401, wantsUser}, {403, forbids}, {404, hasNothingThere}, {421, otherName}, {429, tooManyGuesses}, {503, isBusy},
};

bool isRedirect(unsigned status) { return status >= 300 && status < 400; }

} // namespace

std::string transferFailure(const http::Url& server, const TransferFacts& facts) {
    for (const TransferRow& row : transferRows) {
        if (row.code == facts.code) return row.text(server, facts);
    }
    return facts.detail.empty() ? curl_easy_strerror(static_cast<CURLcode>(facts.code)) : shortened(facts.detail);
}

std::string httpFailure(const http::Url& server, const HttpFacts& facts) {
    const auto* row = std::find_if(std::begin(httpRows), std::end(httpRows),
                                   [&](const HttpRow& candidate) { return candidate.status == facts.status; });
    if (row != std::end(httpRows)) return row->text(facts);
    const std::string status = "HTTP " + std::to_string(facts.status);
    if (facts.status == 200) {
        return "it answers with " + (facts.contentType.empty() ? "no type" : shortened(facts.contentType)) +
               " and not with CIM-XML: no CIM server is at port " + server.port + server.path;
    }
    if (isRedirect(facts.status)) return "it sends elsewhere (" + status + "), where no CIM server does: check the URL";
    if (!facts.cimError.empty()) {
        return "it refuses the request (" + status + ", " + shortened(facts.cimError) + ")";
    }
    const std::string phrase(http::reasonPhrase(facts.status));
    return "it answers " + status + (phrase.empty() ? "" : " " + phrase) +
           (facts.words.empty() ? "" : ": " + facts.words) + ": check port and path";
}

} // namespace cimhost::remote
