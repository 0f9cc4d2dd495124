// Asks everything that a client may ask of one association, and writes the answers down.
#pragma once

#include "golden_text.h"

#include <functional>
#include <string>

class GoldenTest : public WorldTest {
protected:
    /// Starts the provider on that host; an earlier one is ended.
    void serveAnew(const tavik::Fleet& fleet, bool isRefreshed = false);

    /// What the association joins, and each search in both directions.
    std::string pairsAndSearches();
    /// What keys, filters and other arguments change, and what is fetched and what is not.
    std::string details();
    /// What the association writes to the log.
    std::string logTexts();
    /// Which associations stand in front of this one where a request does not name it.
    std::string placesInOrder();

    /// The answer in words, beside the one that is known already: "the same", "nothing", a status, rows.
    std::string outcome(const Reply& reply, const Rows& known = {}) const;
    ShortNames shortNames;

private:
    std::string searchesFrom(const Path& source, bool isEnd);
    std::string answersBesides(Operation operation, const Path& source, const std::vector<Row>& canonical);
    std::string furtherValue(const std::vector<Row>& rows, std::vector<Row> canonical) const;
    std::string keyDetails(const Path& source);
    std::string detailsOfKey(const Path& source, const std::string& key, const Rows& known);
    std::string fromChanged(const Path& source, const Path& changed);
    std::string argumentDetails(const Path& source, bool sourceIsLeft);
    std::string propertyDetails(const Path& source);
    std::string strangeArguments(const Path& source);
    std::string rowsOfStrange(const Path& source, const std::string& what,
                              const std::function<void(Filters&, const std::string&)>& change);
    std::string elsewhereDetails(bool sourceIsLeft);
    std::string fetchDetails();
    std::string fourOutcomes(const Path& source, const Filters& filters);
    std::string failures(const std::function<Reply()>& request);
    std::string messagesOf(const std::function<void()>& request);
    std::string errorsOf(const std::function<void()>& request);
    std::string failingCalls(unsigned RequestHooks::*failing, unsigned most, const std::function<Reply()>& request);
    unsigned addedKeys();
    std::string logOfSearches(bool sourceIsLeft);
};
