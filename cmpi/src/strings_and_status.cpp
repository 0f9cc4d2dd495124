// Server strings, statuses, the common base of the server's objects, and the broker that all of them work with.

#include "CmpiObject.h"
#include "CmpiProviderBase.h"
#include "CmpiStatus.h"
#include "CmpiString.h"
#include "checks.h"

#include <cstring>
#include <strings.h>

std::atomic<CMPIBroker*> CmpiProviderBase::currentBroker{nullptr};

CMPIBroker* CmpiProviderBase::requireBroker() {
    CMPIBroker* broker = getBroker();
    if (!broker) throw CmpiStatus(CMPI_RC_ERR_INVALID_HANDLE);
    return broker;
}

void CmpiProviderBase::setBroker(const CMPIBroker* broker) {
    if (broker) currentBroker.store(const_cast<CMPIBroker*>(broker), std::memory_order_release);
}

namespace {

// A server that makes no string is not worth an exception here: what is built may itself be on its way to be thrown.
CMPIString* newString(CMPIBroker* broker, const char* text) {
    return broker ? broker->eft->newString(broker, text, nullptr) : nullptr;
}

bool same(const char* left, const char* right, int (*compare)(const char*, const char*)) {
    if (!left || !right) return left == right;
    return compare(left, right) == 0;
}

} // namespace

CmpiString::CmpiString(const char* text) : enc(newString(CmpiProviderBase::getBroker(), text)) {}

CmpiString::CmpiString(const CmpiString& original) : CmpiString(original.charPtr()) {}

CmpiBoolean CmpiString::equals(const char* text) const { return same(charPtr(), text, std::strcmp); }

CmpiBoolean CmpiString::equals(const CmpiString& other) const { return equals(other.charPtr()); }

CmpiBoolean CmpiString::equalsIgnoreCase(const char* text) const { return same(charPtr(), text, strcasecmp); }

CmpiBoolean CmpiString::equalsIgnoreCase(const CmpiString& other) const { return equalsIgnoreCase(other.charPtr()); }

CmpiStatus::CmpiStatus(const CMPIrc rcp, const char* message)
    : st{rcp, newString(CmpiProviderBase::getBroker(), message)} {}

const char* CmpiStatus::msg() const {
    if (!st.msg) return nullptr;
    CMPIStatus status = noErrorYet;
    return st.msg->ft->getCharPtr(st.msg, &status);
}

CmpiString CmpiObject::doToString(CMPIBroker* broker) {
    CMPIStatus status = noErrorYet;
    CMPIString* text = broker->eft->toString(broker, enc, &status);
    throwOnError(status);
    return CmpiString(text);
}

CmpiBoolean CmpiObject::doIsA(CMPIBroker* broker, const char* typeName) const {
    CMPIStatus status = noErrorYet;
    CmpiBoolean answer = broker->eft->isOfType(broker, enc, typeName, &status);
    throwOnError(status);
    return answer;
}

CmpiString CmpiObject::toString() { return doToString(CmpiProviderBase::requireBroker()); }

CmpiBoolean CmpiObject::isA(const char* typeName) const { return doIsA(CmpiProviderBase::requireBroker(), typeName); }
