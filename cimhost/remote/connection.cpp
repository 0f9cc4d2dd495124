#include "cimhost/remote/connection.h"

#include "cimhost/cimxml/response.h"
#include "cimhost/model/names.h"
#include "cimhost/model/percent.h"
#include "cimhost/model/printable.h"
#include "cimhost/remote/failure_text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <curl/curl.h>
#include <exception>
#include <new>
#include <string>
#include <utility>

namespace cimhost::remote {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t largestHead = std::size_t{64} << 10;
constexpr std::size_t mostWords = 160;
constexpr std::chrono::milliseconds longestConnect{10'000};

struct EasyDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using EasyHandle = std::unique_ptr<CURL, EasyDeleter>;

struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using FieldList = std::unique_ptr<curl_slist, ListDeleter>;

EasyHandle makeHandle() {
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    EasyHandle handle(started == CURLE_OK ? curl_easy_init() : nullptr);
    if (!handle) throw std::bad_alloc();
    return handle;
}

template <typename Value>
void set(const EasyHandle& handle, CURLoption option, Value value) {
    if (const CURLcode code = curl_easy_setopt(handle.get(), option, value); code != CURLE_OK) {
        throw ServerFailure(curl_easy_strerror(code));
    }
}

void append(FieldList& list, const std::string& line) {
    curl_slist* longer = curl_slist_append(list.get(), line.c_str());
    if (!longer) throw std::bad_alloc();
    static_cast<void>(list.release());
    list.reset(longer);
}

FieldList listOf(const std::vector<http::Field>& fields) {
    FieldList list;
    append(list, "Expect:");      // a large message is sent at once
    append(list, "TE: trailers"); // an error may come behind the beginning of a large answer
    append(list, "Connection: TE");
    for (const http::Field& field : fields)
        append(list, field.name + ": " + field.value);
    return list;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(" \t\r\n") + 1 - begin);
}

bool tellsXml(std::string_view contentType) {
    const std::string_view type = trimmed(contentType.substr(0, contentType.find(';')));
    return type.empty() || equalNames(type, "application/xml") || equalNames(type, "text/xml");
}

} // namespace

struct Connection::State {
    State(Server target, const Identity& identity, std::chrono::milliseconds timeout)
        : server(std::move(target)), allowed(timeout), deadline(Clock::now() + timeout), handle(makeHandle()) {
        setPlace();
        setUser(identity);
        setTrust(identity);
        set(
            handle, CURLOPT_HEADERFUNCTION, +[](char* text, std::size_t size, std::size_t count, void* self) {
                return static_cast<State*>(self)->takeHead({text, size * count});
            });
        set(handle, CURLOPT_HEADERDATA, static_cast<void*>(this));
        set(
            handle, CURLOPT_WRITEFUNCTION, +[](char* text, std::size_t size, std::size_t count, void* self) {
                return static_cast<State*>(self)->takeBody({text, size * count});
            });
        set(handle, CURLOPT_WRITEDATA, static_cast<void*>(this));
        set(handle, CURLOPT_ERRORBUFFER, detail.data());
    }

    void setPlace() {
        const std::string url =
            (server.url.isSecure ? "https://" : "http://") + server.url.authority() + server.url.path;
        set(handle, CURLOPT_URL, url.c_str());
        set(handle, CURLOPT_PROTOCOLS_STR, "http,https");
        set(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        set(handle, CURLOPT_PROXY, "");
        set(handle, CURLOPT_FOLLOWLOCATION, 0L);
        set(handle, CURLOPT_NOSIGNAL, 1L);
        set(handle, CURLOPT_QUICK_EXIT, 1L); // a look-up of a name that hangs is not waited for
        set(handle, CURLOPT_BUFFERSIZE, 65536L);
    }

    void setUser(const Identity& identity) {
        set(handle, CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
        hasUser = !identity.user.empty() || !identity.logins.empty();
        if (!identity.user.empty()) {
            const std::size_t colon = std::min(identity.user.find(':'), identity.user.size() - 1);
            set(handle, CURLOPT_USERNAME, identity.user.substr(0, colon).c_str());
            set(handle, CURLOPT_PASSWORD, identity.user.substr(colon + 1).c_str());
        } else if (!identity.logins.empty()) {
            set(handle, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_OPTIONAL));
            set(handle, CURLOPT_NETRC_FILE, identity.logins.c_str());
        }
    }

    void setTrust(const Identity& identity) {
        const char* const chosen = std::getenv("SSL_CERT_FILE");
        if (!identity.authorities.empty()) {
            set(handle, CURLOPT_CAINFO, identity.authorities.c_str());
            set(handle, CURLOPT_CAPATH, static_cast<char*>(nullptr)); // these, and nobody else
        } else if (chosen && *chosen) {
            set(handle, CURLOPT_CAINFO, chosen);
        }
        if (identity.verifies) return;
        set(handle, CURLOPT_SSL_VERIFYPEER, 0L);
        set(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    }

    // No function here throws through libcurl, which is written in C.

    std::size_t takeHead(std::string_view line) noexcept {
        try {
            if (line.substr(0, 5) == "HTTP/") forgetAnswer(); // behind an interim one
            headBytes += line.size();
            if (headBytes > largestHead) return 0;
            const std::size_t colon = std::min(line.find(':'), line.size());
            const std::string_view value = trimmed(line.substr(std::min(colon + 1, line.size())));
            if (equalNames(line.substr(0, colon), "Content-Type")) facts.contentType = value;
            if (equalNames(line.substr(0, colon), "CIMError")) facts.cimError = value;
            if (equalNames(line.substr(0, colon), "CIMStatusCode")) statusCode = value;
            if (equalNames(line.substr(0, colon), "CIMStatusCodeDescription")) statusWords = decodePercent(value);
            return line.size();
        } catch (...) {
            thrown = std::current_exception();
            return 0;
        }
    }

    std::size_t takeBody(std::string_view piece) noexcept {
        try {
            if (isAnswer()) {
                (*taker)(piece);
            } else if (facts.words.size() < mostWords && facts.contentType.rfind("text/plain", 0) == 0) {
                facts.words += printable(trimmed(piece.substr(0, mostWords)));
            }
            return piece.size();
        } catch (...) {
            thrown = std::current_exception();
            return 0;
        }
    }

    bool isAnswer() {
        if (facts.status == 0) {
            long status = 0;
            curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
            facts.status = static_cast<unsigned>(status);
        }
        return facts.status == 200 && tellsXml(facts.contentType);
    }

    [[nodiscard]] std::chrono::milliseconds left() const {
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        return std::max(rest, std::chrono::milliseconds(0));
    }

    void setTimes() {
        const std::chrono::milliseconds rest = left();
        // To libcurl, 0 means no limit.
        if (rest.count() == 0) throw ServerFailure(transferFailure(server.url, failureFacts(CURLE_OPERATION_TIMEDOUT)));
        set(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(rest.count()));
        set(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::min(rest, longestConnect).count()));
    }

    [[nodiscard]] TransferFacts failureFacts(CURLcode code) {
        TransferFacts failure;
        failure.code = code;
        failure.detail = detail.data();
        failure.allowed = allowed;
        long number = 0;
        curl_easy_getinfo(handle.get(), CURLINFO_SSL_VERIFYRESULT, &failure.certificate);
        curl_easy_getinfo(handle.get(), CURLINFO_OS_ERRNO, &number);
        failure.systemError = static_cast<int>(number);
        // What hung was the connection, and not the answer.
        curl_off_t connected = 0;
        curl_easy_getinfo(handle.get(), CURLINFO_PRETRANSFER_TIME_T, &connected);
        if (code == CURLE_OPERATION_TIMEDOUT && connected == 0 && left().count() > 0) {
            failure.code = CURLE_COULDNT_CONNECT;
            failure.systemError = 0;
        }
        return failure;
    }

    void forgetAnswer() {
        facts = {};
        statusCode.clear();
        statusWords.clear();
    }

    std::optional<CimError> post(const std::vector<http::Field>& fields, std::string_view body, Repeat repeat,
                                 const Take& take) {
        forgetAnswer();
        headBytes = 0;
        taker = &take;
        detail.fill('\0');
        setTimes();
        const FieldList list = listOf(fields);
        set(handle, CURLOPT_HTTPHEADER, list.get());
        set(handle, CURLOPT_POSTFIELDS, body.data());
        set(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        set(handle, CURLOPT_FRESH_CONNECT, repeat == Repeat::never ? 1L : 0L);
        const CURLcode code = curl_easy_perform(handle.get());
        set(handle, CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
        if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
        if (headBytes > largestHead) throw ServerFailure("the head of its answer has no end");
        if (code != CURLE_OK) throw ServerFailure(transferFailure(server.url, failureFacts(code)));
        if (isAnswer() && (statusCode.empty() || statusCode == "0")) return std::nullopt;
        if (isAnswer()) return cimxml::statusError(statusCode, statusWords);
        facts.hasUser = hasUser;
        throw ServerFailure(httpFailure(server.url, facts));
    }

    const Server server;
    const std::chrono::milliseconds allowed;
    const Clock::time_point deadline;
    EasyHandle handle;
    bool hasUser = false;
    const Take* taker = nullptr;
    HttpFacts facts;
    std::string statusCode; // and its description, of the trailers
    std::string statusWords;
    std::size_t headBytes = 0;
    std::array<char, CURL_ERROR_SIZE> detail{};
    std::exception_ptr thrown;
};

Connection::Connection(Server server, const Identity& identity, std::chrono::milliseconds timeout)
    : state(std::make_unique<State>(std::move(server), identity, timeout)) {}

Connection::~Connection() = default;

std::optional<CimError> Connection::post(const std::vector<http::Field>& fields, std::string_view body, Repeat repeat,
                                         const Take& take) {
    return state->post(fields, body, repeat, take);
}

} // namespace cimhost::remote
