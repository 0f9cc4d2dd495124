// Rows in the order in which requests walk them.
#pragma once

#include "associations/association.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace merolt {

/// Rows as they come, each with its place. What has none stands behind all that have one; what is nowhere is left out.
template <class Row>
class PlacedRows {
public:
    void add(int place, Row row) {
        if (place == association::nowhere) return;
        const bool isBehindAll = place == association::behindAll;
        rows.emplace_back(isBehindAll ? std::numeric_limits<int>::max() : place, std::move(row));
    }

    std::vector<Row> inOrder() {
        std::stable_sort(rows.begin(), rows.end(),
                         [](const auto& left, const auto& right) { return left.first < right.first; });
        std::vector<Row> ordered;
        for (auto& [place, row] : rows)
            ordered.push_back(std::move(row));
        return ordered;
    }

private:
    std::vector<std::pair<int, Row>> rows;
};

} // namespace merolt
