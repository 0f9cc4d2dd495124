#include "association_test.h"

#include "request_hooks.h"

#include "log/log.h"

#include <algorithm>

namespace {

using namespace cimhost;

/// An array of many elements is told by its size and a sum; two that differ hardly share both.
std::string textOfArray(const ArrayObject& array) {
    constexpr CMPICount many = 32;
    std::string text = "{";
    unsigned long long sum = 0;
    for (CMPICount index = 0; index < array.size(); ++index) {
        std::string element;
        appendValueText(element, array.element(index));
        if (array.size() <= many) text += element + ", ";
        for (const char character : element)
            sum = sum * 31 + static_cast<unsigned char>(character);
    }
    return text + "} of " + std::to_string(array.size()) + ", sum " + std::to_string(sum);
}

Path pathOf(const ObjectPathObject& object);

Path::Value keyOf(const CMPIData& data) {
    if (data.type == CMPI_ref) return std::vector<Path>{pathOf(*ObjectPathObject::from(data.value.ref))};
    if (data.type != CMPI_string) return static_cast<std::uint32_t>(data.value.uint64);
    std::string text;
    appendValueText(text, data);
    return text;
}

Path pathOf(const ObjectPathObject& object) {
    Path path{std::string(object.nameSpace()), std::string(object.className()), {}};
    for (const NamedData& key : object.keys())
        path.keys.push_back({std::string(key.name), keyOf(key.data)});
    return path;
}

std::string textOf(const Path::Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return '"' + *text + '"';
    if (const auto* number = std::get_if<std::uint32_t>(&value)) return std::to_string(*number);
    return '[' + std::get<std::vector<Path>>(value).front().text() + ']';
}

std::string textOf(const CMPIData& data) {
    if (data.state & CMPI_nullValue) return "null";
    if (data.type & CMPI_ARRAY) return textOfArray(*ArrayObject::from(data.value.array));
    if (data.type == CMPI_string || data.type == CMPI_ref) return textOf(keyOf(data));
    std::string text;
    appendValueText(text, data);
    return text;
}

Row rowOf(const InstanceObject& instance) {
    Row row{std::string(instance.nameSpace()), std::string(instance.className()), {}};
    instance.forEachSetProperty([&](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        row.values.emplace_back(name, textOf(data));
    });
    std::sort(row.values.begin(), row.values.end());
    return row;
}

ObjectPathObject* makePath(ObjectMaker maker, const Path& path) {
    // The class is named last, as lenient servers take any type for a key.
    ObjectPathObject* made = maker.path(path.nameSpace, "");
    for (const Path::Key& key : path.keys) {
        CMPIValue value{};
        CMPIType type = CMPI_string;
        if (const auto* text = std::get_if<std::string>(&key.value)) {
            value.string = maker.string(*text);
        } else if (const auto* number = std::get_if<std::uint32_t>(&key.value)) {
            value.uint32 = *number;
            type = CMPI_uint32;
        } else {
            value.ref = makePath(maker, std::get<std::vector<Path>>(key.value).front());
            type = CMPI_ref;
        }
        EXPECT_EQ(made->addKey(key.name, &value, type), CMPI_RC_OK);
    }
    made->setClassName(path.className);
    return made;
}

const char* pointer(const std::optional<std::string>& text) { return text ? text->c_str() : nullptr; }

} // namespace

std::string Path::operator[](const std::string& name) const {
    for (const Key& key : keys) {
        if (key.name == name && std::holds_alternative<std::string>(key.value)) return std::get<std::string>(key.value);
    }
    return {};
}

Path Path::reference(const std::string& name) const {
    for (const Key& key : keys) {
        if (key.name == name && std::holds_alternative<std::vector<Path>>(key.value))
            return std::get<std::vector<Path>>(key.value).front();
    }
    return {};
}

Path Path::with(const std::string& name, Value value) const {
    Path changed = *this;
    for (Key& key : changed.keys) {
        if (key.name != name) continue;
        key.value = std::move(value);
        return changed;
    }
    changed.keys.push_back({name, std::move(value)});
    return changed;
}

Path Path::without(const std::string& name) const {
    Path changed = *this;
    const auto isNamed = [&](const Key& key) { return key.name == name; };
    changed.keys.erase(std::remove_if(changed.keys.begin(), changed.keys.end(), isNamed), changed.keys.end());
    return changed;
}

Path Path::ofClass(const std::string& otherClass) const { return {nameSpace, otherClass, keys}; }

std::string Path::text() const {
    std::string made = nameSpace + ':' + className;
    char separator = '.';
    for (const Key& key : keys) {
        made += separator + key.name + '=' + textOf(key.value);
        separator = ',';
    }
    return made;
}

std::string Row::text() const {
    std::string made = nameSpace + ':' + className;
    for (const auto& [name, value] : values)
        made += "\n    " + name + " = " + value;
    return made;
}

Row rowOf(const Path& path) {
    Row row{path.nameSpace, path.className, {}};
    for (const Path::Key& key : path.keys)
        row.values.emplace_back(key.name, textOf(key.value));
    return row;
}

Rows textsOf(const std::vector<Row>& rows) {
    Rows texts;
    for (const Row& row : rows)
        texts.push_back(row.text());
    return texts;
}

Rows textsOf(const std::vector<Path>& paths) {
    Rows texts;
    for (const Path& path : paths)
        texts.push_back(rowOf(path).text());
    return texts;
}

const char* nameOf(Operation operation) {
    static constexpr const char* names[] = {"associators", "associatorNames", "references", "referenceNames"};
    return names[static_cast<std::size_t>(operation)];
}

void AssociationTest::serve(tavik::Fleet fleet) {
    tavikLibrary.setFleet(std::move(fleet));
    start();
    associationMI = createAssociationMI();
    ASSERT_NE(associationMI, nullptr);
    merolt::gDebugLog = false;
    merolt::gErrorLog = false;
}

void AssociationTest::logFromHere() {
    merolt::gDebugLog = true;
    merolt::gErrorLog = true;
    takeLogLines();
}

std::vector<std::string> AssociationTest::takeMessages() {
    std::vector<std::string> messages;
    for (const std::string& line : takeLogLines()) {
        if (line.empty() && !messages.empty()) {
            messages.back() += '\n';
        } else {
            messages.push_back(line);
        }
    }
    return messages;
}

template <class Call>
Reply AssociationTest::request(ResultKind kind, const Path& path, Call&& call) {
    RequestScope scope(*broker);
    ResultCollector result(scope, kind);
    ObjectPathObject* object = makePath(scope.make(), path);
    if (requestHooks) requestHooks->watch(object, &result);
    const CMPIStatus status = call(ContextObject::make(scope.arena()), &result, object);
    Reply reply;
    reply.rc = status.rc;
    if (status.msg) reply.message = status.msg->ft->getCharPtr(status.msg, nullptr);
    for (const InstanceObject* instance : result.instances)
        reply.rows.push_back(rowOf(*instance));
    for (const ObjectPathObject* returned : result.paths)
        reply.rows.push_back(rowOf(pathOf(*returned)));
    reply.doneCount = result.doneCount();
    return reply;
}

std::vector<Path> AssociationTest::names(const std::string& className, const std::string& nameSpace) {
    RequestScope scope(*broker);
    ResultCollector result(scope, ResultKind::paths);
    ObjectPathObject* path = scope.make().path(nameSpace, className);
    const CMPIStatus status =
        instanceMI->ft->enumerateInstanceNames(instanceMI, ContextObject::make(scope.arena()), &result, path);
    EXPECT_EQ(status.rc, CMPI_RC_OK) << className;
    std::vector<Path> paths;
    for (const ObjectPathObject* returned : result.paths)
        paths.push_back(pathOf(*returned));
    return paths;
}

Reply AssociationTest::instanceNames(const Path& path) {
    return request(ResultKind::paths, path, [&](auto* context, auto* result, auto* object) {
        return instanceMI->ft->enumerateInstanceNames(instanceMI, context, result, object);
    });
}

Reply AssociationTest::instances(const Path& path) {
    return request(ResultKind::instances, path, [&](auto* context, auto* result, auto* object) {
        return instanceMI->ft->enumerateInstances(instanceMI, context, result, object, nullptr);
    });
}

Reply AssociationTest::instance(const Path& path) {
    return request(ResultKind::instances, path, [&](auto* context, auto* result, auto* object) {
        return instanceMI->ft->getInstance(instanceMI, context, result, object, nullptr);
    });
}

Reply AssociationTest::ask(Operation operation, const Path& source, const Filters& filters) {
    const bool isOfPaths = operation == Operation::associatorNames || operation == Operation::referenceNames;
    std::vector<const char*> list;
    if (filters.properties) {
        for (const std::string& name : *filters.properties)
            list.push_back(name.c_str());
    }
    list.push_back(nullptr);
    const char** properties = filters.properties ? list.data() : nullptr;
    const char* association = pointer(filters.associationClass);
    const char* resultClass = pointer(filters.resultClass);
    const char* role = pointer(filters.role);
    const char* resultRole = pointer(filters.resultRole);
    const CMPIAssociationMIFT& table = *associationMI->ft;
    return request(
        isOfPaths ? ResultKind::paths : ResultKind::instances, source, [&](auto* context, auto* result, auto* object) {
            switch (operation) {
            case Operation::associators:
                return table.associators(associationMI, context, result, object, association, resultClass, role,
                                         resultRole, properties);
            case Operation::associatorNames:
                return table.associatorNames(associationMI, context, result, object, association, resultClass, role,
                                             resultRole);
            case Operation::references:
                return table.references(associationMI, context, result, object, association, role, properties);
            case Operation::referenceNames:
                break;
            }
            return table.referenceNames(associationMI, context, result, object, association, role);
        });
}

Path AssociationTest::first(const std::string& className) {
    const std::vector<Path> paths = names(className);
    EXPECT_FALSE(paths.empty()) << className;
    return paths.empty() ? classPath(className) : paths.front();
}
