// The life of a provider object: from its factory's construction to the last interface's clean-up.

#include "CmpiBaseMI.h"
#include "CmpiProviderBase.h"
#include "driver.h"

#include <memory>

CmpiBaseMI::CmpiBaseMI(const CmpiBroker& providerBroker, const CmpiContext&)
    : broker(&ownBroker), ownBroker(providerBroker) {}

CmpiBaseMI::~CmpiBaseMI() = default;

void CmpiBaseMI::setProviderBase(CmpiProviderBase* base) {
    providerBase = base;
    CmpiProviderBase::setBroker(broker->getEnc());
}

CmpiStatus CmpiBaseMI::initialize(const CmpiContext&) { return CmpiStatus(CMPI_RC_OK); }

CmpiStatus CmpiBaseMI::cleanup(CmpiContext&) { return CmpiStatus(CMPI_RC_OK); }

int CmpiBaseMI::isUnloadable() const { return 1; }

namespace {

// A server that goes down takes anything but an outright failure for leave to go on.
bool mayBeDeleted(CMPIrc cleanupAnswer, CMPIBoolean terminating) {
    return terminating ? cleanupAnswer != CMPI_RC_ERR_FAILED : cleanupAnswer == CMPI_RC_OK;
}

} // namespace

CMPIStatus CmpiBaseMI::driveBaseCleanup(void* mi, const CMPIContext* context, CMPIBoolean terminating) {
    // All five C structs begin with hdl, and the slot's first argument is any of them.
    auto* provider = static_cast<CmpiBaseMI*>(static_cast<const CMPIInstanceMI*>(mi)->hdl);
    try {
        if (!terminating && !provider->isUnloadable()) return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};

        CmpiProviderBase* base = provider->getProviderBase();
        if (!base || base->decUseCount() != 0) return {CMPI_RC_OK, nullptr};

        CmpiContext cleanupContext(plain(context));
        CMPIStatus answer = plainStatus(provider->cleanup(cleanupContext));
        if (!mayBeDeleted(answer.rc, terminating)) {
            base->incUseCount();
            return answer;
        }
        base->setBaseMI(nullptr);
        provider->setProviderBase(nullptr);
        std::unique_ptr<CmpiBaseMI>(provider).reset();
        return {CMPI_RC_OK, nullptr};
    } catch (const CmpiStatus& status) {
        return plainStatus(status);
    }
}
