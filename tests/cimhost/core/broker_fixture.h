// A broker over a few classes that have a property of every type, and a request that is under way. The tests speak to
// it through the C tables, as a provider does.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cimhost/broker/broker.h"
#include "cimhost/model/class_repository.h"

/// The address of a variable as the tables take values: of a number, of a pointer to an object, or the text for chars.
inline const CMPIValue* at(const void* variable) { return static_cast<const CMPIValue*>(variable); }

/// The text of a string; "(none)" for a null pointer.
std::string textOf(const CMPIString* string);

using Types = std::initializer_list<CMPIType>;

constexpr CMPIValueState absentState = CMPI_nullValue | CMPI_notFound;

#define EXPECT_RC(call, code) EXPECT_EQ((call).rc, code)

class BrokerTest : public testing::Test {
protected:
    BrokerTest();
    ~BrokerTest() override;

    /// A new broker, and a new request.
    void start(cimhost::BrokerOptions options = {});
    std::vector<std::string> messages();

    CMPIObjectPath* path(const char* className = "Test_Thing", const char* nameSpace = "root/test");
    CMPIInstance* instance(const char* className = "Test_Thing", const char* nameSpace = "root/test");
    CMPIString* string(const char* text);
    CMPIArray* array(CMPICount size, CMPIType type);
    CMPIDateTime* dateTime(const char* text);
    CMPIArgs* arguments();

    /// setProperty and getProperty of an instance, addKey and getKey of a path.
    CMPIrc set(const CMPIInstance* object, const char* name, const void* variable, CMPIType type);
    CMPIData get(const CMPIInstance* object, const char* name, CMPIrc expected = CMPI_RC_OK);
    CMPIrc set(CMPIObjectPath* object, const char* name, const void* variable, CMPIType type);
    CMPIData get(const CMPIObjectPath* object, const char* name, CMPIrc expected = CMPI_RC_OK);

    cimhost::ClassRepository classes;
    std::unique_ptr<cimhost::Broker> broker;
    std::optional<cimhost::RequestScope> scope;
    const CMPIBroker* cmpi = nullptr;

private:
    std::mutex logMutex;
    std::vector<std::string> logged;
};
