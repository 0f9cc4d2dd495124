#include "cimhost/http/message.h"

#include "cimhost/model/names.h"

namespace cimhost::http {

namespace {

struct Reason {
    unsigned status;
    std::string_view phrase;
};

constexpr Reason reasons[] = {
    {200, "OK"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {411, "Length Required"},
    {413, "Payload Too Large"},
    {415, "Unsupported Media Type"},
    {417, "Expectation Failed"},
    {421, "Misdirected Request"},
    {429, "Too Many Requests"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {503, "Service Unavailable"},
    {510, "Not Extended"},
};

} // namespace

const std::string* Request::field(std::string_view name) const {
    for (const Field& candidate : fields) {
        if (equalNames(candidate.name, name)) return &candidate.value;
    }
    return nullptr;
}

Response textResponse(unsigned status, std::string_view text) {
    Response response;
    response.status = status;
    response.fields.push_back({"Content-Type", "text/plain; charset=utf-8"});
    response.body.append(text);
    response.body.append("\n");
    return response;
}

std::string_view reasonPhrase(unsigned status) {
    for (const Reason& row : reasons) {
        if (row.status == status) return row.phrase;
    }
    return "Unknown";
}

} // namespace cimhost::http
