// Associations from sources that no enumeration ever named: keys of the wrong kind, far too long, empty, or cut in odd
// places. Whatever the answer is, the next client gets his as before.
#include "demonstration.h"

#include "cimhost/service/path_text.h"

#include <gtest/gtest.h>

#include <map>
#include <ostream>

namespace cimhost {
namespace {

using testing_support::Demonstration;

struct WrongKey {
    std::string name;
    cimxml::KeyType type;
    std::string text;
};

void PrintTo(const WrongKey& key, std::ostream* out) { *out << key.name; }

std::vector<WrongKey> wrongKeys() {
    return {
        {"Number", cimxml::KeyType::numeric, "17"},
        {"Boolean", cimxml::KeyType::boolean, "TRUE"},
        {"Empty", cimxml::KeyType::text, ""},
        {"Long", cimxml::KeyType::text, std::string(100'000, 'A')},
        {"Underscores", cimxml::KeyType::text, std::string(1000, '_')},
        {"LongPieces", cimxml::KeyType::text, std::string(300, 'A') + "_" + std::string(300, 'B') + "_9999999999999"},
        {"Format", cimxml::KeyType::text, "%s%n%d_%s_%n"},
        {"HighBytes", cimxml::KeyType::text, "\xC3\xBF\xEF\xBF\xBD_\xC2\x80"},
    };
}

// One object of each class.
std::vector<cimxml::ObjectPath> sources() {
    std::map<std::string, cimxml::ObjectPath> byClass;
    Demonstration& demonstration = Demonstration::instance();
    for (const std::string& object : demonstration.objects()) {
        cimxml::ObjectPath path = parsePath(object, "", demonstration.host().operations().repository());
        byClass.try_emplace(path.nameSpace + path.className, path);
    }
    std::vector<cimxml::ObjectPath> paths;
    for (auto& [className, path] : byClass)
        paths.push_back(std::move(path));
    return paths;
}

class HostileSource : public testing::TestWithParam<WrongKey> {};

TEST_P(HostileSource, DoesNotAffectTheNextClient) {
    Demonstration& demonstration = Demonstration::instance();
    for (const cimxml::ObjectPath& source : sources()) {
        const std::vector<std::string> before = demonstration.rowsFrom(source);
        for (std::size_t place = 0; place < source.keys.size(); ++place) {
            cimxml::ObjectPath wrong = source;
            wrong.keys[place].type = GetParam().type;
            wrong.keys[place].text = GetParam().text;
            EXPECT_NO_THROW(demonstration.rowsFrom(wrong)) << source.className << "." << source.keys[place].name;
        }
        EXPECT_EQ(demonstration.rowsFrom(source), before) << source.className;
    }
}

TEST_P(HostileSource, IsNoPortOfAnyController) {
    Demonstration& demonstration = Demonstration::instance();
    for (cimxml::ObjectPath source : sources()) {
        if (source.className != "Merolt_FCHBA_FCPort") continue;
        for (cimxml::KeyBinding& key : source.keys) {
            if (key.name != "DeviceID") continue;
            key.type = GetParam().type;
            key.text = GetParam().text;
        }
        for (const std::string& row : demonstration.rowsFrom(source))
            EXPECT_EQ(row.find(":Merolt_FCHBA_PortController."), std::string::npos) << row;
    }
}

INSTANTIATE_TEST_SUITE_P(Keys, HostileSource, testing::ValuesIn(wrongKeys()),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace cimhost
