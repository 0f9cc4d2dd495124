// What the tests of the wrapper classes share: a provider that has met a server, and ways to what providers cannot see.
#pragma once

#include "CmpiArgs.h"
#include "CmpiBaseMI.h"
#include "CmpiInstance.h"
#include "CmpiProviderBase.h"
#include "CmpiResult.h"
#include "recording_server.h"
#include "thrown_by.h"

#include <gtest/gtest.h>

/// The message that an action throws with CmpiStatus; "(none)" without message, "(nothing)" if it throws nothing.
template <typename Action>
std::string messageThrownBy(Action action) {
    try {
        action();
    } catch (const CmpiStatus& status) {
        return status.msg() ? status.msg() : "(none)";
    }
    return "(nothing)";
}

/// Wrapper objects as servers hand them in.
struct ServerInstance : CmpiInstance {
    explicit ServerInstance(const CMPIInstance* instance) : CmpiInstance(instance) {}
    explicit ServerInstance(const CmpiInstance& instance) : CmpiInstance(instance) {}
    using CmpiInstance::getEnc;
};

struct ServerArgs : CmpiArgs {
    explicit ServerArgs(CMPIArgs* args) : CmpiArgs(args) {}
    explicit ServerArgs(const CmpiArgs& args) : CmpiArgs(args) {}
    using CmpiArgs::getEnc;
};

struct ServerResult : CmpiResult {
    explicit ServerResult(CMPIResult* result) : CmpiResult(result) {}
};

struct ServerData : CmpiData {
    explicit ServerData(const CMPIData& data) : CmpiData(data) {}
    explicit ServerData(const CmpiData& data) : CmpiData(data) {}
    const CMPIData& plain() const { return _data; }
};

/// A provider that serves nothing.
class BareProvider : public virtual CmpiBaseMI {
public:
    explicit BareProvider(CMPIBroker* server) : CmpiBaseMI(CmpiBroker(server), CmpiContext(nullptr)) {}
    CmpiBroker& server() { return *broker; }
};

/// Tests in which a provider has been connected with a server. None of them may release or clone a server's object.
class WrapperTest : public testing::Test {
protected:
    WrapperTest() { provider.setProviderBase(&base); }

    void TearDown() override {
        EXPECT_EQ(plainBroker.releaseCount, 0u);
        EXPECT_EQ(server.count("clone"), 0);
    }

    RecordingServer server;
    CmpiProviderBase base;
    BareProvider provider{&plainBroker.broker};
};
