// Whoever takes the objects of an answer one by one, and keeps none, is shown the same as whoever collects them: the
// memory of an object may be used again once it is delivered.
#include "demonstration.h"

#include "cimhost/broker/object_sink.h"
#include "cimhost/cimxml/encoder.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>

namespace cimhost {
namespace {

using testing_support::Demonstration;

Host& host() { return Demonstration::instance().host(); }

const cimxml::TagTable& tags() {
    static const cimxml::TagTable table(host().operations().repository());
    return table;
}

class TextSink final : public ObjectSink {
public:
    void deliver(const InstanceObject& instance) override {
        encoder.instancePath(instance, {});
        encoder.instance(instance, {});
        encoder.raw("\n");
    }
    void deliver(const ObjectPathObject& path) override {
        encoder.instancePath(path, {});
        encoder.raw("\n");
    }

    ByteBuffer text;

private:
    cimxml::Encoder encoder{text, tags()};
};

const ObjectPathObject& pathOf(RequestScope& scope, const std::string& text) {
    const cimxml::ObjectPath parsed = parsePath(text, "", host().operations().repository());
    return makePath(scope, parsed.nameSpace, parsed);
}

using Ask = std::function<void(RequestScope& scope, ObjectSink& sink)>;

// Counters and temperatures go on meanwhile.
std::string withoutNumbers(std::string_view text) {
    std::string shown;
    for (const char character : text) {
        const bool isDigit = character >= '0' && character <= '9';
        if (!isDigit || shown.empty() || shown.back() != '#') shown += isDigit ? '#' : character;
    }
    return shown;
}

std::string handedOver(const Ask& ask) {
    RequestScope scope(host().broker());
    TextSink sink;
    ask(scope, sink);
    return withoutNumbers(sink.text.view());
}

std::string collected(const Ask& ask) {
    RequestScope scope(host().broker());
    ObjectCollector all(scope.arena());
    ask(scope, all);
    TextSink sink;
    for (const InstanceObject* instance : all.instances)
        sink.deliver(*instance);
    for (const ObjectPathObject* path : all.paths)
        sink.deliver(*path);
    return withoutNumbers(sink.text.view());
}

TEST(HandedOver, EveryClassHasTheSameInstancesAndPaths) {
    Operations& operations = host().operations();
    std::size_t shown = 0;
    for (const std::string_view nameSpace : operations.repository().namespaces()) {
        for (const ClassDeclaration* declaration : operations.repository().classes(nameSpace)) {
            if (!operations.registration().serves(*declaration, ProviderKind::instance)) continue;
            const auto instances = [&](RequestScope& scope, ObjectSink& sink) {
                operations.enumerateInstances(scope, {}, *declaration, true, {}, sink);
            };
            const auto names = [&](RequestScope& scope, ObjectSink& sink) {
                operations.enumerateInstanceNames(scope, {}, *declaration, sink);
            };
            const std::string text = handedOver(instances);
            EXPECT_TRUE(text == collected(instances)) << declaration->name();
            EXPECT_TRUE(handedOver(names) == collected(names)) << declaration->name();
            shown += text.size();
        }
    }
    EXPECT_GT(shown, 100'000U);
}

TEST(HandedOver, EveryObjectShowsTheSameAssociations) {
    Operations& operations = host().operations();
    std::size_t shown = 0;
    for (const std::string& object : Demonstration::instance().objects()) {
        const auto from = [&](auto call) {
            return [&operations, &object, call](RequestScope& scope, ObjectSink& sink) {
                call(operations, scope, pathOf(scope, object), sink);
            };
        };
        const auto check = [&](const Ask& ask) {
            const std::string text = handedOver(ask);
            EXPECT_TRUE(text == collected(ask)) << object;
            shown += text.size();
        };
        check(from([](Operations& all, RequestScope& scope, const ObjectPathObject& source, ObjectSink& sink) {
            all.associators(scope, {}, source, {}, {}, sink);
        }));
        check(from([](Operations& all, RequestScope& scope, const ObjectPathObject& source, ObjectSink& sink) {
            all.associatorNames(scope, {}, source, {}, sink);
        }));
        check(from([](Operations& all, RequestScope& scope, const ObjectPathObject& source, ObjectSink& sink) {
            all.references(scope, {}, source, {}, {}, sink);
        }));
        check(from([](Operations& all, RequestScope& scope, const ObjectPathObject& source, ObjectSink& sink) {
            all.referenceNames(scope, {}, source, {}, sink);
        }));
    }
    EXPECT_GT(shown, 100'000U);
}

} // namespace
} // namespace cimhost
