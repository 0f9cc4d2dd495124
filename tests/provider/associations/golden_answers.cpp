// The part of a golden text that tells answers.
#include "golden_test.h"
#include "request_hooks.h"

#include "classes/storage/vital_product_data.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr const char* same = "the same";
constexpr const char* elsewhere = "root/elsewhere";

std::string line(const std::string& text) { return "  " + text + '\n'; }

/// A text in the other case of letters.
std::string otherCase(std::string text) {
    for (char& character : text) {
        const auto letter = static_cast<unsigned char>(character);
        character = static_cast<char>(std::islower(letter) ? std::toupper(letter) : std::tolower(letter));
    }
    return text;
}

Rows inOwnNameSpace(Rows rows) {
    for (std::string& row : rows) {
        for (std::size_t place = row.find(elsewhere); place != std::string::npos; place = row.find(elsewhere))
            row.replace(place, std::string(elsewhere).size(), "root/merolt_cmpi");
    }
    return rows;
}

std::string joined(const std::vector<std::string>& texts, const std::string& separator = ", ") {
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : separator) + text;
    return all;
}

void eraseAll(std::string& text, const std::string& part) {
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place))
        text.erase(place, part.size());
}

/// A value that the references of every search that finds something carry stands once, in front of them.
std::string toldOnce(const std::string& searches) {
    const std::string mark = "    references: with ";
    const std::size_t place = searches.find(mark);
    if (place == std::string::npos) return searches;
    const std::string told = searches.substr(place, searches.find('\n', place) + 1 - place);
    std::string rest = searches;
    std::string without = searches;
    eraseAll(without, "-> nothing");
    std::size_t fruitful = 0;
    for (std::size_t at = without.find(" -> "); at != std::string::npos; at = without.find(" -> ", at + 1))
        ++fruitful;
    eraseAll(rest, told);
    const bool isEverywhere = searches.size() - rest.size() == fruitful * told.size();
    return isEverywhere ? "  (each with the" + told.substr(3, told.size() - 4) + ")\n" + rest : searches;
}

/// What several variants of one thing give: in one word where they agree.
std::string folded(const std::vector<std::pair<std::string, std::string>>& outcomes) {
    const auto isFirst = [&](const auto& one) { return one.second == outcomes.front().second; };
    if (std::all_of(outcomes.begin(), outcomes.end(), isFirst))
        return outcomes.front().second + " (" + std::to_string(outcomes.size()) + " ways)";
    std::vector<std::string> texts;
    for (const auto& [what, outcome] : outcomes)
        texts.push_back(what + ": " + outcome);
    return joined(texts, "; ");
}

const std::pair<const char*, std::string> strangeNames[] = {{"10000 letters", std::string(10000, 'x')},
                                                            {"underscores", "Merolt_" + std::string(300, '_')},
                                                            {"no name", "not a name"},
                                                            {"percent signs", "%s%s%n"},
                                                            {"not of ASCII", "\xC3\xA4"},
                                                            {"one underscore", "_"}};

} // namespace

void GoldenTest::serveAnew(const tavik::Fleet& fleet, bool isRefreshed) {
    stop();
    merolt::storage::g_UUID.clear();
    merolt::storage::clearVpdStores();
    serve(fleet);
    if (isRefreshed) refreshTo(*fleet.cards);
    learn();
    shortNames = {};
    shortNames.learn(world);
    shortNames.leaveOut(family.associationClass);
}

std::string GoldenTest::outcome(const Reply& reply, const Rows& known) const {
    std::vector<std::string> parts;
    if (reply.rc != CMPI_RC_OK)
        parts.push_back("status " + std::to_string(reply.rc) + (reply.message.empty() ? "" : ' ' + reply.message));
    if (reply.doneCount != 1) parts.push_back("ended " + std::to_string(reply.doneCount) + " times");
    if (reply.rows.empty()) {
        if (parts.empty()) parts.push_back("nothing");
    } else if (reply.texts() == known) {
        parts.push_back(same);
    } else {
        for (const Row& row : reply.rows)
            parts.push_back(shortNames.of(row));
    }
    return joined(parts);
}

// What is joined.

std::string GoldenTest::pairsAndSearches() {
    const Reply pairs = instanceNames(classPath(family.associationClass));
    const Reply whole = instances(classPath(family.associationClass));
    std::string text = "pairs:" + std::string(pairs.rows.empty() ? " none\n" : "\n");
    for (const Row& row : pairs.rows)
        text += line(shortNames.of(row));
    if (pairs.rc != CMPI_RC_OK || pairs.doneCount != 1) text += line(outcome(pairs));
    // The properties of an instance stand by name, the keys of a path in the order of their setting.
    std::vector<Row> sorted = pairs.rows;
    for (Row& row : sorted)
        std::sort(row.values.begin(), row.values.end());
    const std::string further = furtherValue(whole.rows, sorted);
    if (!further.empty()) text += "instances: with " + further + '\n';
    if (further.empty() && whole.texts() != textsOf(sorted)) {
        text += "instances:\n";
        for (const Row& row : whole.rows)
            text += line(shortNames.of(row));
    }
    if (whole.rc != CMPI_RC_OK || whole.doneCount != 1) text += line(outcome(whole));
    text += "searches:\n";
    std::string found;
    for (const auto& [className, ends] : world) {
        const bool isEnd = className == family.leftClass || className == family.rightClass;
        for (const End& end : ends) {
            const std::string searches = searchesFrom(end.path, isEnd);
            // Of what the association does not join one object is enough.
            if (searches.empty() && !isEnd) break;
            found += searches;
        }
    }
    return text + (found.empty() ? line("nothing from any object") : toldOnce(found));
}

std::string GoldenTest::searchesFrom(const Path& source, bool isEnd) {
    const Reply far = ask(Operation::associatorNames, source, ofFamily());
    const std::string name = shortNames.of(source);
    if (!isEnd && far.rows.empty() && far.rc == CMPI_RC_OK &&
        ask(Operation::referenceNames, source, ofFamily()).rows.empty())
        return {};
    std::string text = line(name + " -> " + outcome(far));
    std::vector<Row> wholes;
    std::vector<Row> pairs;
    std::vector<Row> pairNames;
    const bool isLeft = source.className == family.leftClass;
    for (const Row& row : far.rows) {
        for (const auto& [className, ends] : world) {
            const auto isFar = [&](const End& end) { return rowOf(end.path).text() == row.text(); };
            const auto end = std::find_if(ends.begin(), ends.end(), isFar);
            if (end == ends.end()) continue;
            wholes.push_back(end->instance);
            const Path& left = isLeft ? source : end->path;
            const Path& right = isLeft ? end->path : source;
            pairs.push_back(associationInstance(family, left, right));
            pairNames.push_back(rowOf(associationPath(family, left, right)));
            break;
        }
    }
    text += answersBesides(Operation::associators, source, wholes);
    text += answersBesides(Operation::references, source, pairs);
    return text + answersBesides(Operation::referenceNames, source, pairNames);
}

/// Nothing where the answer is as expected of every association.
std::string GoldenTest::answersBesides(Operation operation, const Path& source, const std::vector<Row>& canonical) {
    const Reply reply = ask(operation, source, ofFamily());
    const bool isEnded = reply.rc == CMPI_RC_OK && reply.doneCount == 1;
    if (isEnded && reply.texts() == textsOf(canonical)) return {};
    const std::string what = "  " + std::string(nameOf(operation)) + ": ";
    const std::string further = isEnded ? furtherValue(reply.rows, canonical) : "";
    return line(what + (further.empty() ? outcome(reply) : "with " + further));
}

/// `Name=value` if each row has that beside its two ends, and nothing else is otherwise.
std::string GoldenTest::furtherValue(const std::vector<Row>& rows, std::vector<Row> canonical) const {
    std::string found;
    if (rows.empty() || rows.size() != canonical.size()) return {};
    for (const auto& [name, value] : rows.front().values) {
        if (name != family.role1 && name != family.role2) found = name + '=' + value;
    }
    for (Row& row : canonical) {
        row.values.emplace_back(found.substr(0, found.find('=')), found.substr(found.find('=') + 1));
        std::sort(row.values.begin(), row.values.end());
    }
    return textsOf(rows) == textsOf(canonical) ? found : "";
}

// What requests may say besides.

std::string GoldenTest::details() {
    std::string text;
    for (const bool sourceIsLeft : {true, false}) {
        const std::optional<Path> source = fruitfulSource(sourceIsLeft);
        if (!source) continue;
        shortNames.nameSource(*source);
        text += "from " + shortNames.of(*source) + " (associators, associatorNames, references, referenceNames):\n";
        text += keyDetails(*source) + argumentDetails(*source, sourceIsLeft) + elsewhereDetails(sourceIsLeft);
    }
    return text + fetchDetails();
}

/// The outcomes of all operations, in one word where they agree.
std::string GoldenTest::fourOutcomes(const Path& source, const Filters& filters) {
    std::vector<std::string> outcomes;
    for (const Operation operation : allOperations) {
        const Rows known = ask(operation, source, ofFamily()).texts();
        Filters one = filters;
        outcomes.push_back(outcome(ask(operation, source, one), known));
    }
    const bool agree = std::count(outcomes.begin(), outcomes.end(), outcomes.front()) == 4;
    return agree ? outcomes.front() : joined(outcomes, " | ");
}

/// What references name of that source, with another path in its place.
Rows fromOtherSource(Rows rows, const Path& source, const Path& other) {
    const std::string named = '[' + source.text() + ']';
    for (std::string& row : rows) {
        const std::size_t place = row.find(named);
        if (place != std::string::npos) row.replace(place + 1, named.size() - 2, other.text());
    }
    return rows;
}

/// The outcomes of all operations from a source that was changed, in one word where they agree.
std::string GoldenTest::fromChanged(const Path& source, const Path& changed) {
    std::vector<std::string> outcomes;
    for (const Operation operation : allOperations) {
        const Rows known = ask(operation, source, ofFamily()).texts();
        outcomes.push_back(outcome(ask(operation, changed, ofFamily()), fromOtherSource(known, source, changed)));
    }
    const bool agree = std::count(outcomes.begin(), outcomes.end(), outcomes.front()) == 4;
    return agree ? outcomes.front() : joined(outcomes, " | ");
}

std::string GoldenTest::keyDetails(const Path& source) {
    const Rows known = ask(Operation::associatorNames, source, ofFamily()).texts();
    Path bare = source;
    bare.keys.clear();
    std::string text = line("no key at all: " + fromChanged(source, bare));
    for (const Path::Key& key : source.keys)
        text += detailsOfKey(source, key.name, known);
    for (const auto& [keys, what] : {std::pair{RequestHooks::Keys::null, "every key null: "},
                                     std::pair{RequestHooks::Keys::withoutText, "every key a text without text: "}}) {
        RequestHooks hooks(*broker);
        hooks.keys = keys;
        requestHooks = &hooks;
        const Reply reply = ask(Operation::associatorNames, source, ofFamily());
        requestHooks = nullptr;
        text += line(what + outcome(reply, known));
    }
    return text;
}

std::string GoldenTest::detailsOfKey(const Path& source, const std::string& key, const Rows& known) {
    const std::vector<std::pair<std::string, std::string>> ways = {
        {"absent", fromChanged(source, source.without(key))},
        {"of another object", fromChanged(source, source.with(key, "elsewhere"))},
        {"in the other case", fromChanged(source, source.with(key, otherCase(source[key])))}};
    const std::pair<const char*, Path::Value> strange[] = {
        {"10000 letters", std::string(10000, 'x')},
        {"10000 underscores", std::string(10000, '_')},
        {"x_999..._x", "x_" + std::string(10000, '9') + "_x"},
        {"one underscore", std::string("_")},
        {"empty", std::string()},
        {"a number", std::uint32_t{5}},
        {"a reference", std::vector<Path>{classPath("CIM_ManagedElement")}}};
    std::vector<std::pair<std::string, std::string>> strangeWays;
    for (const auto& [what, value] : strange)
        strangeWays.emplace_back(what,
                                 outcome(ask(Operation::associatorNames, source.with(key, value), ofFamily()), known));
    const auto isSame = [](const auto& way) { return way.second == same; };
    if (std::all_of(ways.begin(), ways.end(), isSame) && std::all_of(strangeWays.begin(), strangeWays.end(), isSame))
        return line(key + " is not read");
    std::string text;
    for (const auto& [what, outcome] : ways)
        text += line(key + ' ' + what + ": " + outcome);
    return text + line(key + " strange: " + folded(strangeWays));
}

std::string GoldenTest::argumentDetails(const Path& source, bool sourceIsLeft) {
    std::string text;
    const auto with = [&](const std::string& what, const std::function<void(Filters&)>& change) {
        Filters filters = ofFamily();
        change(filters);
        text += line(what + ": " + fourOutcomes(source, filters));
    };
    const std::string nearRole = sourceIsLeft ? family.role1 : family.role2;
    const std::string farRole = sourceIsLeft ? family.role2 : family.role1;
    const std::string farClass = ask(Operation::associatorNames, source, ofFamily()).rows.front().className;
    with("role " + nearRole, [&](Filters& filters) { filters.role = nearRole; });
    with("role in the other case, empty result role and class", [&](Filters& filters) {
        filters.role = otherCase(nearRole);
        filters.resultRole = "";
        filters.resultClass = "";
    });
    with("result role " + farRole + ", empty role", [&](Filters& filters) {
        filters.role = "";
        filters.resultRole = farRole;
    });
    with("result role in the other case, empty role and result class", [&](Filters& filters) {
        filters.role = "";
        filters.resultRole = otherCase(farRole);
        filters.resultClass = "";
    });
    with("both roles and result class " + farClass, [&](Filters& filters) {
        filters.role = nearRole;
        filters.resultRole = farRole;
        filters.resultClass = farClass;
    });
    with("role " + farRole, [&](Filters& filters) { filters.role = farRole; });
    with("result role NoSuchRole", [&](Filters& filters) { filters.resultRole = "NoSuchRole"; });
    with("result class Merolt_FCHBA_StorageExtent",
         [&](Filters& filters) { filters.resultClass = "Merolt_FCHBA_StorageExtent"; });
    return text + propertyDetails(source) + strangeArguments(source);
}

std::string GoldenTest::propertyDetails(const Path& source) {
    std::vector<Row> narrowed = ask(Operation::associators, source, ofFamily()).rows;
    const std::vector<Row> paths = ask(Operation::associatorNames, source, ofFamily()).rows;
    const std::string property = narrowed.front().values.back().first;
    for (std::size_t index = 0; index < narrowed.size() && index < paths.size(); ++index) {
        auto& values = narrowed[index].values;
        const auto isLeftOut = [&](const auto& value) {
            const auto& keys = paths[index].values;
            const auto isKey = [&](const auto& key) { return key.first == value.first; };
            return value.first != property && std::none_of(keys.begin(), keys.end(), isKey);
        };
        values.erase(std::remove_if(values.begin(), values.end(), isLeftOut), values.end());
    }
    Filters filters = ofFamily();
    filters.properties = {property};
    const Reply reply = ask(Operation::associators, source, filters);
    const bool isNarrowed = reply.rc == CMPI_RC_OK && reply.texts() == textsOf(narrowed);
    const Rows known = ask(Operation::references, source, ofFamily()).texts();
    return line("property " + property + ": " + (isNarrowed ? "that and the keys" : outcome(reply)) +
                "; references: " + outcome(ask(Operation::references, source, filters), known));
}

std::string GoldenTest::strangeArguments(const Path& source) {
    const std::pair<const char*, std::function<void(Filters&, const std::string&)>> places[] = {
        {"association", [](Filters& filters, const std::string& text) { filters.associationClass = text; }},
        {"association with more behind it",
         [](Filters& filters, const std::string& text) { *filters.associationClass += text; }},
        {"both roles", [](Filters& filters, const std::string& text) {
             filters.role = text;
             filters.resultRole = text;
         }}};
    std::string text;
    for (const auto& [what, change] : places) {
        std::vector<std::pair<std::string, std::string>> outcomes;
        for (const auto& [name, value] : strangeNames) {
            Filters filters = ofFamily();
            change(filters, value);
            outcomes.emplace_back(name, fourOutcomes(source, filters));
        }
        text += line("strange " + std::string(what) + ": " + folded(outcomes));
    }
    // A server may refuse what is no name.
    text += rowsOfStrange(source, "result class and property", [](Filters& filters, const std::string& name) {
        filters.resultClass = name;
        filters.properties = {name};
    });
    return text + rowsOfStrange(source, "property",
                                [](Filters& filters, const std::string& name) { filters.properties = {name}; });
}

/// How many rows the operations deliver, where that is what counts.
std::string GoldenTest::rowsOfStrange(const Path& source, const std::string& what,
                                      const std::function<void(Filters&, const std::string&)>& change) {
    std::vector<std::pair<std::string, std::string>> outcomes;
    for (const auto& [name, value] : strangeNames) {
        Filters filters = ofFamily();
        change(filters, value);
        std::vector<std::string> counts;
        for (const Operation operation : allOperations)
            counts.push_back(std::to_string(ask(operation, source, filters).rows.size()));
        outcomes.emplace_back(name, joined(counts, " | ") + " rows");
    }
    return line("strange " + what + ": " + folded(outcomes));
}

std::string GoldenTest::elsewhereDetails(bool sourceIsLeft) {
    Path source = fruitfulSource(sourceIsLeft).value();
    std::vector<std::string> outcomes;
    for (const Operation operation : {Operation::associatorNames, Operation::references, Operation::referenceNames}) {
        const Rows known = ask(operation, source, ofFamily()).texts();
        Path asked = source;
        asked.nameSpace = elsewhere;
        const Reply reply = ask(operation, asked, ofFamily());
        outcomes.push_back(inOwnNameSpace(reply.texts()) == known ? "the same in that namespace"
                                                                  : outcome(reply, known));
    }
    return line("in another namespace, without associators: " + joined(outcomes, " | "));
}

std::string GoldenTest::fetchDetails() {
    const std::vector<Path> pairs = names(family.associationClass);
    if (pairs.empty()) return {};
    std::string text = "getInstance:\n";
    const auto fetched = [&](const Path& path) {
        Row own = rowOf(path);
        std::sort(own.values.begin(), own.values.end());
        const Reply reply = instance(path);
        const bool isItself = reply.rc == CMPI_RC_OK && reply.doneCount == 1 && reply.texts() == Rows{own.text()};
        return isItself ? std::string("itself") : outcome(reply);
    };
    std::vector<Path> asked = pairs;
    asked.push_back(
        associationPath(family, pairs.front().reference(family.role1), pairs.back().reference(family.role2)));
    std::size_t themselves = 0;
    for (const Path& path : asked) {
        const std::string answer = fetched(path);
        if (answer == "itself")
            ++themselves;
        else
            text += line(shortNames.of(rowOf(path)) + ": " + answer);
    }
    text += line(std::to_string(themselves) + " of " + std::to_string(asked.size()) +
                 " pairs, the first left end with the last right end among them: itself");
    const std::optional<Path> pair = somePair();
    if (!pair) return text;
    text += " of " + shortNames.of(rowOf(*pair)) + '\n';
    for (const std::string& role : {family.role1, family.role2}) {
        const Path end = pair->reference(role);
        const auto withEnd = [&](const Path& other) { return pair->with(role, std::vector<Path>{other}); };
        for (const Path::Key& key : end.keys) {
            const std::string wrong = fetched(withEnd(end.with(key.name, "no such object")));
            const std::string absent = fetched(withEnd(end.without(key.name)));
            const std::string name = role + '.' + key.name;
            if (wrong == "itself" && absent == "itself")
                text += line(name + " is not read");
            else
                text += line(name + " of no object: " + wrong) + line(name + " absent: " + absent);
        }
        text += line("without " + role + ": " + fetched(pair->without(role)));
        text += line(role + " a text: " + fetched(pair->with(role, "a text")));
        text += line(role + " a number: " + fetched(pair->with(role, std::uint32_t{5})));
    }
    const Path left = pair->reference(family.role1);
    const Path right = pair->reference(family.role2);
    text += line("both ends of no object: " +
                 fetched(associationPath(family, left.with(lookedUpKey(left), "the left is looked for first"),
                                         right.with(lookedUpKey(right), "no such object"))));
    text += line("both ends without their key: " +
                 fetched(associationPath(family, left.without(lookedUpKey(left)), right.without(lookedUpKey(right)))));
    text += line("of class " + family.baseClass + ": " + fetched(pair->ofClass(family.baseClass)));
    text += line("of class CIM_Dependency: " + fetched(pair->ofClass("CIM_Dependency")));
    for (const RequestHooks::Keys keys : {RequestHooks::Keys::null, RequestHooks::Keys::withoutText}) {
        RequestHooks hooks(*broker);
        hooks.keys = keys;
        requestHooks = &hooks;
        const Reply reply = instance(*pair);
        requestHooks = nullptr;
        text += line(
            std::string(keys == RequestHooks::Keys::null ? "every key null: " : "every key a text without text: ") +
            outcome(reply));
    }
    Path requested = classPath(family.associationClass);
    const Rows known = instanceNames(requested).texts();
    const Rows knownInstances = instances(requested).texts();
    requested.nameSpace = elsewhere;
    const Reply there = instanceNames(requested);
    text += "enumerated in another namespace:\n";
    text += line("names: " + (inOwnNameSpace(there.texts()) == known ? "the same in that namespace" : outcome(there)));
    const Reply wholes = instances(requested);
    text += line("instances: " +
                 (inOwnNameSpace(wholes.texts()) == knownInstances ? "the same in that namespace" : outcome(wholes)));
    return text;
}

// Where a request does not name it.

std::string GoldenTest::placesInOrder() {
    std::string text;
    const auto placed = [&](const Path& source, const std::string& how, Operation operation, const Filters& filters) {
        std::vector<std::string> visited;
        for (const Row& row : ask(operation, source, filters).rows) {
            if (visited.empty() || visited.back() != row.className) visited.push_back(row.className);
        }
        const auto own = std::find(visited.begin(), visited.end(), family.associationClass);
        if (own == visited.end()) return;
        const std::string place = own == visited.begin() ? "first" : "behind " + *(own - 1);
        text += line(how + " from " + source.className + ": " + place);
    };
    for (const auto& [className, ends] : world) {
        for (const End& end : ends) {
            if (ask(Operation::referenceNames, end.path, ofFamily()).rows.empty() &&
                ask(Operation::references, end.path, ofFamily()).rows.empty())
                continue;
            placed(end.path, "no association named", Operation::referenceNames, {});
            for (const Operation operation : {Operation::references, Operation::referenceNames})
                placed(end.path, nameOf(operation) + (" of " + family.baseClass), operation,
                       {.associationClass = family.baseClass});
            break;
        }
    }
    return text.empty() ? line("never unless it is named") : text;
}
