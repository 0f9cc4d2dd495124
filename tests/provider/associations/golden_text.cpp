#include "golden_text.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace {

constexpr const char* vendor = "Merolt_";
constexpr const char* defaultNameSpace = "root/merolt_cmpi:";

std::string withoutVendor(const std::string& className) {
    return className.rfind(vendor, 0) == 0 ? className.substr(7) : className;
}

/// Keys that every object on a host shares tell none from another.
std::string labelOf(const Path& path) {
    static const std::set<std::string> shared{"SystemName", "SystemCreationClassName", "CreationClassName"};
    std::string label = '<' + withoutVendor(path.className);
    char separator = ' ';
    for (const Path::Key& key : path.keys) {
        if (shared.count(key.name) > 0 || !std::holds_alternative<std::string>(key.value)) continue;
        label += separator + std::get<std::string>(key.value);
        separator = '/';
    }
    return label + '>';
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t place = text.find(from); place != std::string::npos; place = text.find(from, place + to.size()))
        text.replace(place, from.size(), to);
}

} // namespace

void ShortNames::learn(const std::map<std::string, Ends>& world) {
    std::set<std::string> taken;
    for (const auto& [className, ends] : world) {
        for (const End& end : ends) {
            if (byPath.count(end.path.text()) > 0) continue;
            std::string label = labelOf(end.path);
            while (!taken.insert(label).second)
                label.insert(label.size() - 1, "'");
            byPath[end.path.text()] = label;
            byRow[rowOf(end.path).text()] = label;
            byRow[end.instance.text()] = label;
        }
    }
}

void ShortNames::nameSource(const Path& path) { sourceText = path.text(); }

void ShortNames::leaveOut(const std::string& className) { ownClass = className; }

std::string ShortNames::shortened(std::string text) const {
    if (!sourceText.empty() && byPath.count(sourceText) == 0) replaceAll(text, '[' + sourceText + ']', "<source>");
    for (std::size_t begin = text.find('['); begin != std::string::npos; begin = text.find('[', begin + 1)) {
        const std::size_t end = text.find(']', begin);
        const auto found = byPath.find(text.substr(begin + 1, end - begin - 1));
        if (found != byPath.end()) text.replace(begin, end - begin + 1, found->second);
    }
    return text;
}

std::string ShortNames::of(const Row& row) const {
    const auto found = byRow.find(row.text());
    if (found != byRow.end()) return found->second;
    std::string text = shortened(row.text());
    replaceAll(text, "\n    ", " ");
    replaceAll(text, " = ", "=");
    replaceAll(text, defaultNameSpace, "");
    return text.rfind(ownClass + ' ', 0) == 0 ? text.substr(ownClass.size() + 1) : text;
}

std::string ShortNames::of(const Path& path) const {
    const auto found = byPath.find(path.text());
    return found == byPath.end() ? path.text() : found->second;
}

std::string goldenFile(const std::string& associationClass) {
    return std::string(MEROLT_GOLDEN_FOLDER) + '/' + withoutVendor(associationClass) + ".txt";
}

std::vector<std::string> goldenNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(MEROLT_GOLDEN_FOLDER)) {
        if (entry.path().extension() == ".txt") names.push_back(entry.path().stem().string());
    }
    const char* wished = std::getenv("MEROLT_GOLDEN_NAME");
    if (wished && std::count(names.begin(), names.end(), wished) == 0) names.emplace_back(wished);
    std::sort(names.begin(), names.end());
    return names;
}

void compareWithGolden(const std::string& associationClass, const std::string& text) {
    const std::string name = goldenFile(associationClass);
    const char* asked = std::getenv("MEROLT_GOLDEN");
    const std::string wish = asked ? asked : "";
    const bool isThere = std::filesystem::exists(name);
    if (wish == "overwrite" || (wish == "write" && !isThere)) {
        std::ofstream(name, std::ios::binary) << text;
        ADD_FAILURE() << "wrote " << name << "; read it, and run the test again without MEROLT_GOLDEN";
        return;
    }
    ASSERT_TRUE(isThere) << associationClass << " has no golden text " << name
                         << "; tests/provider/associations/write_golden.sh writes it";
    std::ifstream file(name, std::ios::binary);
    const std::string golden((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_EQ(golden, text) << "read by " << name;
}
