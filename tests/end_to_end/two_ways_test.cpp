// Some servers hand a request to the provider as it is, others once for each association class that the object can take
// part in. A client must see the same, but where he names a base class, which only the second kind finds.
#include "demonstration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>

namespace cimhost {
namespace {

using testing_support::Demonstration;

using Operation = std::vector<std::string> (Demonstration::*)(const std::string&, const std::string&);

struct NamedOperation {
    std::string name;
    Operation operation;
};

void PrintTo(const NamedOperation& named, std::ostream* out) { *out << named.name; }

class TwoWays : public testing::TestWithParam<NamedOperation> {};

TEST_P(TwoWays, GiveTheSameRows) {
    Demonstration& demonstration = Demonstration::instance();
    const auto ask = std::bind_front(GetParam().operation, std::ref(demonstration));
    std::size_t rows = 0;
    for (const std::string& object : demonstration.objects()) {
        std::vector<std::string> forEachClass = ask(object, "");
        std::vector<std::string> atOnce = demonstration.asking(AssociationCalls::once, [&] { return ask(object, ""); });
        std::vector<std::string> oneByOne;
        for (const std::string& association : demonstration.associationsOf(object)) {
            const std::vector<std::string> some = ask(object, association);
            oneByOne.insert(oneByOne.end(), some.begin(), some.end());
        }
        EXPECT_EQ(forEachClass, oneByOne) << object;
        rows += atOnce.size();
        std::sort(atOnce.begin(), atOnce.end());
        std::sort(oneByOne.begin(), oneByOne.end());
        EXPECT_EQ(atOnce, oneByOne) << object;
    }
    EXPECT_GT(rows, demonstration.objects().size());
}

TEST_P(TwoWays, ABaseClassFindsTheRowsOfItsClasses) {
    Demonstration& demonstration = Demonstration::instance();
    const auto ask = std::bind_front(GetParam().operation, std::ref(demonstration));
    const ClassRepository& repository = demonstration.host().operations().repository();
    for (const char* base : {"CIM_SystemDevice", "CIM_Component", "CIM_Dependency"}) {
        std::size_t rows = 0;
        for (const std::string& object : demonstration.objects()) {
            const std::string nameSpace = object.substr(0, object.find(':'));
            std::vector<std::string> ofClasses;
            for (const std::string& association : demonstration.associationsOf(object)) {
                if (!repository.find(nameSpace, association)->isA(base)) continue;
                const std::vector<std::string> some = ask(object, association);
                ofClasses.insert(ofClasses.end(), some.begin(), some.end());
            }
            EXPECT_EQ(ask(object, base), ofClasses) << object;
            rows += ofClasses.size();
        }
        EXPECT_GT(rows, 0U) << base;
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, TwoWays,
                         testing::Values(NamedOperation{"Associators", &Demonstration::associators},
                                         NamedOperation{"AssociatorNames", &Demonstration::associatorNames},
                                         NamedOperation{"References", &Demonstration::references},
                                         NamedOperation{"ReferenceNames", &Demonstration::referenceNames}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace cimhost
