// What an association answers, as a text that a person can read: golden/NAME.txt. Objects stand in it by short names,
// and what is as in every association is left out.
#pragma once

#include "world_test.h"

#include <map>
#include <string>
#include <vector>

/// Short names for paths. An object that the provider lists is <Class key>; anything else stands in full.
class ShortNames {
public:
    void learn(const std::map<std::string, Ends>& world);
    /// Rows of that class go without its name.
    void leaveOut(const std::string& className);
    /// Names the path that a request is made from.
    void nameSource(const Path& path);

    /// One line for a row. An object that is exactly as its class lists it is its short name.
    std::string of(const Row& row) const;
    std::string of(const Path& path) const;

private:
    std::string shortened(std::string text) const;

    std::map<std::string, std::string> byPath; ///< by the path's text
    std::map<std::string, std::string> byRow;  ///< by the row's text, of paths and of instances
    std::string sourceText;
    std::string ownClass;
};

/// The path of the golden text of an association class.
std::string goldenFile(const std::string& associationClass);
/// Names of the associations that have one, without `Merolt_`, and the one that MEROLT_GOLDEN_NAME wants.
std::vector<std::string> goldenNames();

/// Fails the test unless the file says exactly that. With MEROLT_GOLDEN=write in the environment a file that is missing
/// is written, with MEROLT_GOLDEN=overwrite any; the test fails then, too, so that nobody takes it for a comparison.
void compareWithGolden(const std::string& associationClass, const std::string& text);
