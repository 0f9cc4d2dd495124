// A CIM server's side of the CMPI tables that writes down every call, answers from memory and fails where told.
#pragma once

#include "cmpidt.h"
#include "cmpift.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct FakeBroker;

/// A value as it came through a table: chars are read as the text that the value pointer then is.
struct StoredValue {
    CMPIType type = CMPI_null;
    CMPIValue value = {};
    std::string text;
};

struct FakeString : CMPIString {
    FakeBroker* broker = nullptr;
    std::string text;
};

struct FakeDateTime : CMPIDateTime {
    FakeBroker* broker = nullptr;
    CMPIUint64 microseconds = 0;
    CMPIBoolean interval = 0;
};

struct FakeArray : CMPIArray {
    FakeBroker* broker = nullptr;
    CMPIType type = CMPI_null;
    std::vector<StoredValue> elements;
};

struct FakePath : CMPIObjectPath {
    FakeBroker* broker = nullptr;
    std::string host, nameSpace, className;
    std::vector<std::pair<std::string, StoredValue>> keys;
};

struct FakeInstance : CMPIInstance {
    FakeBroker* broker = nullptr;
    CMPIObjectPath* path = nullptr;
    std::vector<std::pair<std::string, StoredValue>> properties;
    const char** filter = nullptr;
    std::vector<std::string> filterKeys;
    bool filterKeysGiven = false;
};

struct FakeArgs : CMPIArgs {
    FakeBroker* broker = nullptr;
    std::vector<std::pair<std::string, StoredValue>> values;
};

struct FakeContext : CMPIContext {
    FakeBroker* broker = nullptr;
    std::map<std::string, CMPIData> entries;
};

struct FakeResult : CMPIResult {
    FakeBroker* broker = nullptr;
    std::vector<StoredValue> data;
    std::vector<const CMPIInstance*> instances;
    std::vector<const CMPIObjectPath*> paths;
    int done = 0;
};

struct FakeEnumeration : CMPIEnumeration {
    FakeBroker* broker = nullptr;
    std::vector<CMPIData> elements;
    std::size_t next = 0;
};

struct FakeSelectExp : CMPISelectExp {};

/// The server. Objects that it makes live as long as it does; "release" and "clone" among its calls mean that somebody
/// took an object's life into his own hands.
struct FakeBroker : CMPIBroker {
    FakeBroker();
    FakeBroker(const FakeBroker&) = delete;
    FakeBroker& operator=(const FakeBroker&) = delete;

    /// Every call of that table function ends with this code from now on, and with a message if one is given.
    void failWith(const std::string& function, CMPIrc rc, const char* message = nullptr);

    /// How often a table function was called.
    int count(const std::string& function) const;

    /// Writes a call down and gives its outcome.
    CMPIStatus enter(const char* function);

    /// A new object of the server, which owns it.
    template <typename Fake>
    Fake* make() {
        auto object = std::make_shared<Fake>();
        objects.push_back(object);
        return object.get();
    }

    FakeString* string(const char* text);
    FakeArray* array(CMPICount size, CMPIType type);
    FakePath* path(const char* nameSpace, const char* className);
    FakeInstance* instance(CMPIObjectPath* path);
    FakeArgs* args();
    FakeContext* context();
    FakeResult* result();
    FakeEnumeration* enumeration();
    FakeDateTime* dateTime(CMPIUint64 microseconds, CMPIBoolean interval);

    std::vector<std::string> calls;
    std::map<std::string, CMPIStatus> failures;
    std::vector<std::shared_ptr<void>> objects;

    /// Code for items that an instance or arguments lack; servers differ in it.
    CMPIrc absentRc = CMPI_RC_ERR_NO_SUCH_PROPERTY;

    /// The arguments of the last call of the server itself.
    const CMPIContext* lastContext = nullptr;
    const CMPIObjectPath* lastPath = nullptr;
    const CMPIInstance* lastInstance = nullptr;
    const char** lastProperties = nullptr;
    std::string lastText;
};

/// A CMPIData as servers make them.
CMPIData dataOf(CMPIType type, CMPIValue value = {}, CMPIValueState state = CMPI_goodValue);
