#include "answer_source.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace cimhost::testing_support {

namespace {

/// Ends with the process.
const std::string& sharedServer() {
    static Process server(
        {PROGRAM, "--fleet", FLEET, "serve", "--listen", "127.0.0.1:0", "--state", "", "--anonymous-writes"});
    static const std::string url = urlOf(server);
    return url;
}

void eraseAll(std::string& text, const std::string& part) {
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part))
        text.erase(place, part.size());
}

} // namespace

std::string nameOfSource(const testing::TestParamInfo<AnswerSource>& parameter) {
    return parameter.param == AnswerSource::library ? "Library" : "Server";
}

Ended askedOf(AnswerSource source, std::vector<std::string> question) {
    if (source == AnswerSource::library) {
        question.insert(question.begin(), {"--fleet", FLEET});
        return cimhost(question);
    }
    const bool isJson = std::find(question.begin(), question.end(), "--json") != question.end();
    const std::string& url = sharedServer();
    question.insert(question.end(), {"--server", url});
    Ended ended = cimhost(question);
    if (isJson && !ended.output.empty()) {
        ended.output = nlohmann::ordered_json::parse(ended.output).at("answer").dump(2) + "\n";
    }
    eraseAll(ended.errors, url + ": ");
    eraseAll(ended.errors, "\"server\":\"" + url + "\",");
    return ended;
}

} // namespace cimhost::testing_support
