// Method calls through the C tables, with arguments in every form that servers deliver them in.
#pragma once

#include "../class_support.h"

#include "cimhost/broker/request_scope.h"

#include "cmpift.h"

#include <cstring>
#include <fstream>
#include <future>
#include <map>
#include <string>

/// What a method gave.
struct MethodAnswer {
    CMPIrc rc = CMPI_RC_OK;
    std::string message;
    std::vector<std::string> returned; ///< "256 2": type and number of each value
    std::size_t doneCount = 0;
};

inline MethodAnswer returned(unsigned number) {
    return {CMPI_RC_OK, "", {std::to_string(CMPI_uint32) + ' ' + std::to_string(number)}, 2};
}

inline bool operator==(const MethodAnswer& left, const MethodAnswer& right) {
    return left.rc == right.rc && left.message == right.message && left.returned == right.returned &&
           left.doneCount == right.doneCount;
}

inline std::ostream& operator<<(std::ostream& out, const MethodAnswer& answer) {
    out << "status " << answer.rc << " \"" << answer.message << '"';
    for (const std::string& value : answer.returned)
        out << ", returned " << value;
    return out << ", done " << answer.doneCount << " times";
}

/// Arguments that hand out their data exactly as a test put them in, types and states included.
class GivenArguments : public CMPIArgs {
public:
    GivenArguments();
    GivenArguments(const GivenArguments&) = delete;
    GivenArguments& operator=(const GivenArguments&) = delete;

    void set(const std::string& name, CMPIType type, CMPIValue value) { items[name] = {type, CMPI_goodValue, value}; }
    void setNull(const std::string& name, CMPIType type) { items[name] = {type, CMPI_nullValue, {}}; }

    std::map<std::string, CMPIData> items;
    CMPIrc absent = CMPI_RC_ERR_NO_SUCH_PROPERTY; ///< what an argument that is not there reads as
};

namespace given {

inline CMPIData get(const CMPIArgs* object, const char* name, CMPIStatus* status) {
    const auto* arguments = static_cast<const GivenArguments*>(object);
    const auto found = arguments->items.find(name);
    const bool isThere = found != arguments->items.end();
    if (status) *status = {isThere ? CMPI_RC_OK : arguments->absent, nullptr};
    return isThere ? found->second : CMPIData{CMPI_null, CMPI_notFound | CMPI_nullValue, {}};
}

inline const CMPIArgsFT table = {CMPICurrentVersion, nullptr, nullptr, nullptr, get, nullptr, nullptr};

} // namespace given

inline GivenArguments::GivenArguments() : CMPIArgs{this, const_cast<CMPIArgsFT*>(&given::table)} {}

class MethodTest : public ClassTest {
protected:
    void SetUp() override {
        switchLogsOn();
        prepareFleet();
        start();
        methodMI = createMethodMI();
        scope = std::make_unique<cimhost::RequestScope>(*broker);
        takeLogLines();
    }
    void TearDown() override { scope.reset(); }

    /// A converged card with a storage function 1 and an Ethernet function eth1, serial number CNA0001.
    void prepareFleet() {
        tavik::StorageFunction storage = functionWithVpd(1, {{"SN", "CNA0001"}, {"RM", "01.00.00"}}, chips::chip15);
        tavik::NicFunction nic = adapters::nicFunction(7, 1);
        nic.card.serialNumber = "CNA0001";
        nic.card.flashVersion = "01.00.00";
        prepare({adapters::card("CNA0001", {storage, nic})});
    }

    MethodAnswer invoke(const std::string& className, const char* method) {
        cimhost::ResultCollector result(*scope, cimhost::ResultKind::data);
        const CMPIStatus status = methodMI->ft->invokeMethod(
            methodMI, cimhost::ContextObject::make(scope->arena()), &result,
            scope->make().path(implementationNamespace, className), method, &arguments, &out);
        MethodAnswer answer{status.rc, "", {}, result.doneCount()};
        if (status.msg) answer.message = status.msg->ft->getCharPtr(status.msg, nullptr);
        for (const CMPIData& data : result.data)
            answer.returned.push_back(std::to_string(data.type) + ' ' + std::to_string(data.value.uint32));
        return answer;
    }

    void setText(const std::string& name, const std::string& text) {
        CMPIValue value{};
        value.string = scope->make().string(text);
        arguments.set(name, CMPI_string, value);
    }

    cimhost::ObjectPathObject* setPath(const std::string& name, const char* className, const std::string& deviceID) {
        cimhost::ObjectPathObject* path = scope->make().path(implementationNamespace, className);
        CMPIValue key{};
        key.string = scope->make().string(deviceID);
        path->addKey("DeviceID", &key, CMPI_string);
        setReference(name, path);
        return path;
    }

    void setReference(const std::string& name, cimhost::ObjectPathObject* path) {
        CMPIValue value{};
        value.ref = path;
        arguments.set(name, CMPI_ref, value);
    }

    /// A path whose key is a number, as a lenient server passes on.
    void setPathWithNumber(const std::string& name, const char* className) {
        cimhost::ObjectPathObject* path = scope->make().path(implementationNamespace, "");
        CMPIValue key{};
        key.uint32 = 5;
        path->addKey("DeviceID", &key, CMPI_uint32);
        path->setClassName(className);
        setReference(name, path);
    }

    /// An array of zeros with these bytes in front, of the type that the server says.
    void setBytes(const std::string& name, CMPICount size, CMPIType type, const std::string& front = "") {
        cimhost::ArrayObject* array = cimhost::ArrayObject::make(scope->arena(), size, CMPI_uint8);
        for (CMPICount index = 0; index < size; ++index) {
            CMPIData byte{CMPI_uint8, CMPI_goodValue, {}};
            byte.value.uint8 = index < front.size() ? static_cast<CMPIUint8>(front[index]) : CMPIUint8{0};
            array->store(index, byte);
        }
        CMPIValue value{};
        value.array = array;
        arguments.set(name, type, value);
    }

    /// A file of that size; its place on disk is a hole.
    std::string fileOf(const std::string& name, std::uintmax_t size) {
        writeFile(name, "");
        std::filesystem::resize_file(name, size);
        return std::filesystem::absolute(name).string();
    }

    /// Both locks are free, also for another client, and a request works as before.
    void expectNextRequestWorks() {
        auto refusal = std::async(std::launch::async, [&] { return modifyInstance("Merolt_FCHBA_PortController").rc; });
        ASSERT_EQ(refusal.wait_for(longEnough), std::future_status::ready) << "a lock is still held";
        EXPECT_EQ(refusal.get(), CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(enumerateInstances("Merolt_FCHBA_PortController").objects.size(), 1U);
        EXPECT_EQ(invoke("Merolt_FCHBA_SoftwareInstallationService", "NoSuchMethod"), returned(1));
    }

    std::unique_ptr<cimhost::RequestScope> scope;
    GivenArguments arguments;
    GivenArguments out;
};
