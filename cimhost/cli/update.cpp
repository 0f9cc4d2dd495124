#include "cimhost/cli/update.h"

#include "cimhost/cli/image_facts.h"
#include "cimhost/cli/local_source.h"
#include "cimhost/cli/method_outcome.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/own_location.h"
#include "cimhost/cli/table.h"
#include "cimhost/cli/update_card.h"
#include "cimhost/cli/update_place.h"
#include "cimhost/model/names.h"
#include "cimhost/service/method_requests.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <utility>

namespace cimhost::cli {

namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;
using Print = std::function<void(const std::string& text)>;

// Some services show new versions when they next look at their adapters: each three minutes unless told otherwise.
constexpr std::chrono::seconds longestLook{200};
constexpr std::chrono::milliseconds lookAgain{500};

/// How an image gets to a card.
struct Road {
    const InstallationSide* side = nullptr;
    const MethodDeclaration* method = nullptr;
    std::string uri; ///< empty: its bytes are sent
};

enum class State { untouched, done, failed };

struct CardUpdate {
    UpdatePlace* place;
    UpdateCard card;
    Road road;
    Versions before;
    Versions after;
    State state = State::untouched;
    std::string failure;
};

std::string called(const CardUpdate& update) {
    return update.card.serial + (update.place->isHere() ? "" : " at " + update.place->name());
}

const InstallationSide* sideWith(const UpdateCard& card, const MethodDeclaration* (InstallationSide::*method)() const) {
    const auto side = std::find_if(card.sides.begin(), card.sides.end(),
                                   [method](const InstallationSide& candidate) { return (candidate.*method)(); });
    return side == card.sides.end() ? nullptr : &*side;
}

/// A file that its host can read, where there is one; else the bytes.
Road roadTo(const CardUpdate& update, const UpdateOptions& options) {
    const bool isHere = update.place->isHere();
    const std::string path =
        isHere && options.path.empty() ? std::filesystem::absolute(options.image).string() : options.path;
    const auto wanted = path.empty() ? &InstallationSide::byBytes : &InstallationSide::byUri;
    if (const InstallationSide* side = sideWith(update.card, wanted)) {
        return {side, (side->*wanted)(), path.empty() ? "" : "file://" + path};
    }
    if (!path.empty()) throw std::runtime_error(called(update) + ": no service there can update it");
    throw std::runtime_error(called(update) + ": its service takes no bytes; copy the image to that host and give its "
                                              "place there with --path");
}

class Updater {
public:
    Updater(std::vector<UpdatePlace>& where, const UpdateOptions& updateOptions, const MessageOptions& messageOptions,
            Print to)
        : places(where), options(updateOptions), messages(messageOptions), print(std::move(to)),
          image(readImage(options.image)) {}

    ExitStatus run() {
        for (UpdatePlace& place : places)
            place.begin();
        for (const std::string& serial : options.cards)
            updates.push_back(find(serial));
        for (CardUpdate& update : updates)
            judge(update);
        if (options.form == Form::table) print(shownPlan());
        if (!options.isAgreed) requireConsent();
        updateAll();
        print(options.form == Form::json ? json() : summary());
        return status();
    }

private:
    static tavik::FlashImage readImage(const std::string& file) {
        auto read = tavik::readFlashImageFile(file);
        if (const auto* fault = std::get_if<tavik::FlashFault>(&read)) throw std::runtime_error(fault->reason);
        return std::move(std::get<tavik::FlashImage>(read));
    }

    CardUpdate find(const std::string& serial) {
        std::vector<CardUpdate> found;
        for (UpdatePlace& place : places) {
            try {
                if (auto card = findCard(place.source(), options.nameSpace, serial)) {
                    found.push_back({&place, std::move(*card), {}, {}, {}, State::untouched, {}});
                }
            } catch (const remote::ServerFailure& failure) {
                throw std::runtime_error(place.name() + ": " + failure.what());
            }
        }
        if (found.size() == 1) return std::move(found.front());
        if (found.empty()) throw std::runtime_error("there is no card with the serial number " + serial);
        throw std::runtime_error("the card " + serial + " is at " + found[0].place->name() + " and at " +
                                 found[1].place->name() + "; ask one of them alone");
    }

    // Before anything is written anywhere.
    void judge(CardUpdate& update) {
        if (update.card.model.empty()) throw std::runtime_error(called(update) + ": its model is not known");
        if (!equalNames(update.card.model, image.cardModel)) {
            throw std::runtime_error(called(update) + " is a " + update.card.model + ", and the image is for " +
                                     image.cardModel);
        }
        update.road = roadTo(update, options);
        update.before = installedVersions(update.place->source(), options.nameSpace, update.card);
    }

    [[nodiscard]] std::string shownPlan() const {
        std::string text = "image " + options.image + "\n";
        const Json facts = imageFacts(image);
        for (const auto& [name, value] : facts.items()) {
            const std::string fact = value.is_string() ? value.get<std::string>() : value.dump();
            if (!fact.empty()) text.append("  ").append(name).append(": ").append(fact).append("\n");
        }
        for (const CardUpdate& update : updates) {
            text += "card " + called(update) + ", " + update.card.model + ", by " + update.road.method->name + "\n";
            for (const InstalledSoftware& software : update.before)
                text.append("  ").append(software.name).append(": ").append(software.version).append("\n");
        }
        return text;
    }

    void requireConsent() const {
        if (::isatty(STDIN_FILENO) == 0)
            throw std::runtime_error("nobody can be asked here: --yes agrees to the update");
        std::clog << "write the flash of " << updates.size()
                  << (updates.size() == 1 ? " card? [y/N] " : " cards? [y/N] ") << std::flush;
        std::string answer;
        std::getline(std::cin, answer);
        if (answer != "y" && answer != "Y" && answer != "yes") throw std::runtime_error("nothing was written");
    }

    void updateAll() {
        for (CardUpdate& update : updates) {
            std::atomic<bool> isWritten = false;
            const Progress progress(messages, [&] {
                return (isWritten ? "waiting until the new version shows on " : "writing the flash of ") +
                       called(update);
            });
            try {
                update.place->begin();
                write(update);
                update.state = State::done;
                isWritten = true;
                update.after = versionsAfter(update);
            } catch (const std::exception& failure) {
                update.failure = failure.what();
            }
            if (update.state == State::done) continue;
            update.state = State::failed;
            return;
        }
    }

    void write(const CardUpdate& update) {
        ObjectSource& source = update.place->source();
        RequestScope scope(source.broker());
        const Road& road = update.road;
        std::deque<cimxml::Value> values;
        std::vector<NamedValue> arguments;
        const auto add = [&](std::string_view name, cimxml::Value value) {
            arguments.push_back({name, &values.emplace_back(std::move(value))});
        };
        add("Target", textValue(road.side->controller));
        if (road.uri.empty()) {
            add("Image", bytesOfImage());
        } else {
            add("URI", textValue(road.uri));
            if (road.method->parameter("InstallOptions")) add("InstallOptions", cimxml::Value());
        }
        const cimxml::ObjectPath service = parsePath(road.side->service, options.nameSpace, source.repository());
        const Outcome outcome = source.invokeMethod(
            scope, makePath(scope, service.nameSpace, service), *road.method,
            makeArguments(scope, service.nameSpace, *road.method, arguments, source.arrayArguments()));
        const std::string failure = failureOf(*road.method, outcome);
        if (failure.empty()) return;
        throw std::runtime_error(failure + (road.uri.empty() ? "; a server that hands arrays over with their type "
                                                               "cannot do it by bytes: try --path"
                                                             : ""));
    }

    static cimxml::Value textValue(const std::string& text) {
        cimxml::Value value;
        value.isNull = false;
        value.texts.append(text);
        return value;
    }

    [[nodiscard]] cimxml::Value bytesOfImage() const {
        cimxml::Value value;
        value.isNull = false;
        value.isArray = true;
        const auto bytes = tavik::encodeFlashImage(image);
        for (const std::uint8_t byte : std::get<tavik::Bytes>(bytes))
            value.texts.append(std::to_string(byte));
        return value;
    }

    // Waits until a change shows. An update to the same version changes nothing.
    Versions versionsAfter(const CardUpdate& update) {
        const Clock::time_point until = Clock::now() + longestLook;
        for (;;) {
            Versions versions = installedVersions(update.place->source(), options.nameSpace, update.card);
            if (versions != update.before || showsImage(versions) || Clock::now() >= until) return versions;
            std::this_thread::sleep_for(lookAgain);
        }
    }

    // "2.2.3", or with two digits each.
    [[nodiscard]] bool showsImage(const Versions& versions) const {
        char plain[16];
        char padded[16];
        const auto& [major, minor, patch] = image.version;
        std::snprintf(plain, sizeof plain, "%u.%u.%u", unsigned{major}, unsigned{minor}, unsigned{patch});
        std::snprintf(padded, sizeof padded, "%02u.%02u.%02u", unsigned{major}, unsigned{minor}, unsigned{patch});
        return std::any_of(versions.begin(), versions.end(), [&](const InstalledSoftware& known) {
            return known.version == plain || known.version == padded;
        });
    }

    static std::string versionOf(const Versions& versions, const std::string& id) {
        const auto known = std::find_if(versions.begin(), versions.end(),
                                        [&id](const InstalledSoftware& candidate) { return candidate.id == id; });
        return known == versions.end() ? "-" : known->version;
    }

    static std::string changesOf(const CardUpdate& update) {
        std::vector<Row> rows;
        for (const InstalledSoftware& software : update.after)
            rows.push_back({software.name, versionOf(update.before, software.id), software.version});
        if (update.after == update.before || update.after.empty()) return "no new version shows yet\n";
        return renderTable({"Software", "Before", "After"}, rows, layoutOf(STDOUT_FILENO));
    }

    [[nodiscard]] std::string summary() const {
        std::string text;
        for (const CardUpdate& update : updates) {
            if (update.state == State::done) text += called(update) + ": updated\n" + changesOf(update);
            if (update.state == State::done && !update.failure.empty()) text += update.failure + "\n";
            if (update.state == State::failed) text += called(update) + ": failed: " + update.failure + "\n";
            if (update.state == State::untouched) text += called(update) + ": untouched\n";
        }
        return text;
    }

    static Json jsonOf(const Versions& versions) {
        Json list = Json::array();
        for (const InstalledSoftware& software : versions)
            list.push_back({{"id", software.id}, {"name", software.name}, {"version", software.version}});
        return list;
    }

    [[nodiscard]] std::string json() const {
        Json answer;
        answer["image"] = imageFacts(image);
        Json& cards = answer["cards"] = Json::array();
        for (const CardUpdate& update : updates) {
            Json card;
            card["card"] = update.card.serial;
            card["server"] = update.place->isHere() ? Json(nullptr) : Json(update.place->name());
            card["state"] = update.state == State::done     ? "done"
                            : update.state == State::failed ? "failed"
                                                            : "untouched";
            card["before"] = jsonOf(update.before);
            if (update.state == State::done) card["after"] = jsonOf(update.after);
            if (update.state == State::failed) card["message"] = update.failure;
            cards.push_back(std::move(card));
        }
        return answer.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    }

    [[nodiscard]] ExitStatus status() const {
        const auto failed = std::find_if(updates.begin(), updates.end(),
                                         [](const CardUpdate& update) { return update.state == State::failed; });
        if (failed == updates.end()) return ok;
        sayError(messages, called(*failed) + ": " + failed->failure);
        return failed == updates.begin() ? methodFailed : someFailed;
    }

    std::vector<UpdatePlace>& places;
    const UpdateOptions& options;
    const MessageOptions& messages;
    const Print print;
    const tavik::FlashImage image;
    std::vector<CardUpdate> updates;
};

ExitStatus updateHere(const HostOptions& hostOptions, const UpdateOptions& options, const MessageOptions& messages) {
    useOwnInstallLocation();
    const CleanOutput output(hostOptions.broker.log);
    Host host(hostOptions);
    LocalSource source(host.operations(), host.broker());
    std::vector<UpdatePlace> places;
    places.emplace_back(source);
    const ExitStatus status =
        Updater(places, options, messages, [&output](const std::string& text) { output.write(text); }).run();
    host.shutdown();
    return status;
}

} // namespace

ExitStatus update(const HostOptions& hostOptions, const UpdateOptions& options, const MessageOptions& messages) {
    if (!options.servers.areGiven()) return updateHere(hostOptions, options, messages);
    DeclaredClasses declared(hostOptions, options.nameSpace);
    const std::vector<remote::Server> servers = serversOf(options.servers);
    const remote::Identity identity = identityOf(options.servers.identity, servers);
    std::vector<UpdatePlace> places;
    for (const remote::Server& server : servers)
        places.emplace_back(server, identity, options.servers.timeout(), declared);
    return Updater(places, options, messages, [](const std::string& text) { std::cout << text << std::flush; }).run();
}

} // namespace cimhost::cli
