#include "cimhost/cli/doctor_output.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/cli/table.h"
#include "cimhost/model/printable.h"

#include <algorithm>

namespace cimhost::cli {

namespace {

using doctor::Diagnosis;
using doctor::Rule;
using doctor::Urgency;

std::size_t countOf(std::span<const Diagnosis> found, Urgency urgency) {
    return static_cast<std::size_t>(std::count_if(
        found.begin(), found.end(), [urgency](const Diagnosis& one) { return one.rule->urgency == urgency; }));
}

std::string counted(std::size_t count, const std::string& word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

/// The text behind its beginning, in lines of the layout's width; further lines stand below the text's first word.
std::string wrapped(const std::string& beginning, std::string_view text, const Layout& layout) {
    const std::string indent(length(beginning), ' ');
    std::string lines, line = beginning;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const bool isFirst = length(line) == indent.size();
        if (!isFirst && layout.width != 0 && length(line) + 1 + length(word) > layout.width) {
            lines += line + "\n";
            line = indent;
        } else if (!isFirst) {
            line += ' ';
        }
        line += word;
    }
    return lines + line + "\n";
}

std::string headingOf(const Rule& rule, const Layout& layout) {
    const Colour colour = rule.urgency == Urgency::fault ? Colour::red : Colour::yellow;
    const std::string name = std::string(doctor::nameOf(rule.urgency)) + " " + std::string(rule.name);
    return coloured(layout, colour, name) + wrapped(name + ": ", rule.title, layout).substr(name.size());
}

std::string signText(const doctor::Sign& sign, const Layout& layout) {
    std::string text = wrapped("  ", printable(sign.subject + ": " + sign.evidence), layout);
    if (!sign.hint.empty()) text += wrapped("    ", sign.hint, layout);
    return text;
}

Json ruleJson(const Rule& rule) {
    return {{"rule", rule.name},
            {"urgency", doctor::nameOf(rule.urgency)},
            {"title", rule.title},
            {"why", rule.why},
            {"advice", rule.advice}};
}

} // namespace

std::string doctorText(std::span<const Diagnosis> found, const Layout& layout) {
    if (found.empty()) return "Nothing is wrong.\n";
    std::string text;
    for (std::size_t i = 0; i < found.size(); ++i) {
        const Rule& rule = *found[i].rule;
        if (i == 0 || found[i - 1].rule != &rule) text += headingOf(rule, layout);
        text += signText(found[i].sign, layout);
        const bool isLast = i + 1 == found.size() || found[i + 1].rule != &rule;
        if (!isLast) continue;
        text += wrapped("  Why: ", rule.why, layout) + wrapped("  Do:  ", rule.advice, layout) + "\n";
    }
    return text + counted(countOf(found, Urgency::fault), "fault") + ", " +
           counted(countOf(found, Urgency::warning), "warning") + "\n";
}

std::string doctorJson(std::span<const Diagnosis> found) {
    Json document;
    document["faults"] = countOf(found, Urgency::fault);
    document["warnings"] = countOf(found, Urgency::warning);
    Json& findings = document["findings"] = Json::array();
    for (const Diagnosis& one : found) {
        Json object = ruleJson(*one.rule);
        object["subject"] = one.sign.subject;
        object["evidence"] = one.sign.evidence;
        object["hint"] = one.sign.hint.empty() ? Json() : Json(one.sign.hint);
        findings.push_back(std::move(object));
    }
    return dump(document);
}

std::string rulesText(const Layout& layout) {
    std::vector<Row> rows;
    for (const Rule& rule : doctor::rules()) {
        rows.push_back({std::string(rule.name), std::string(doctor::nameOf(rule.urgency)), std::string(rule.title)});
    }
    return renderTable({"rule", "urgency", "what it tells"}, rows, layout);
}

std::string rulesJson() {
    Json list = Json::array();
    for (const Rule& rule : doctor::rules())
        list.push_back(ruleJson(rule));
    return dump(list);
}

} // namespace cimhost::cli
