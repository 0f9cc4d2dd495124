#include "cimhost/indications/query.h"

#include "cimhost/indications/query_condition.h"
#include "cimhost/indications/query_parser.h"
#include "cimhost/model/names.h"

#include <algorithm>
#include <array>
#include <utility>

namespace cimhost {

namespace {

constexpr std::size_t longestQuery = 8192;

} // namespace

bool isQueryLanguage(std::string_view name) noexcept {
    constexpr std::array known = {std::string_view("WQL"), std::string_view("CIM:CQL"), std::string_view("DMTF:CQL")};
    return std::any_of(known.begin(), known.end(), [&](std::string_view one) { return equalNames(one, name); });
}

Query::Query(std::string className, std::unique_ptr<const Node> condition)
    : from(std::move(className)), where(std::move(condition)) {}
Query::~Query() = default;
Query::Query(Query&&) noexcept = default;
Query& Query::operator=(Query&&) noexcept = default;

Query Query::parse(std::string_view text) {
    if (text.size() > longestQuery) throw QueryError("it is longer than " + std::to_string(longestQuery) + " bytes");
    ParsedQuery parsed = parseQuery(text);
    return {std::move(parsed.className), std::move(parsed.where)};
}

void Query::checkAgainst(const ClassDeclaration& declaration) const {
    if (where) checkCondition(*where, declaration);
}

bool Query::selects(const InstanceObject& indication) const {
    return !where || holds(*where, indication).value_or(false);
}

} // namespace cimhost
