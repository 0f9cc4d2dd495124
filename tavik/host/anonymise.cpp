#include "tavik/host/anonymise.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <map>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tavik/host/descriptor.h"
#include "tavik/host/identities.h"
#include "tavik/host/neighbours.h"
#include "tavik/host/serial_places.h"
#include "tavik/host/sys_tree.h"

namespace tavik::host {

namespace {

namespace fs = std::filesystem;

/** More than anything that is recorded. */
constexpr std::size_t largestFile = 1 << 20;

struct Entry {
    std::string path; ///< relative to the recording
    fs::file_type type;
};

using EntriesOrError = std::variant<std::vector<Entry>, std::string>;

EntriesOrError listEntries(const fs::path& from) {
    std::vector<Entry> entries;
    std::error_code error;
    for (fs::recursive_directory_iterator place(from, error), end; !error && place != end; place.increment(error))
        entries.push_back({place->path().lexically_relative(from).string(), place->symlink_status().type()});
    if (error) return from.string() + ": " + error.message();
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.path < b.path; });
    return entries;
}

class Copier {
public:
    Copier(const fs::path& from, fs::path to, const std::vector<Replacement>& replacements)
        : tree_(from), from_(from), to_(std::move(to)), replacer_(Identities::makeReplacer(replacements)) {
        for (const auto& replacement : replacements)
            others_[replacement.original] = replacement.other;
    }

    /** @return an error that names the place, or an empty text. */
    std::string copy(const Entry& entry) const {
        const auto target = to_ / replacer_.replaced(entry.path);
        std::error_code error;
        if (entry.type == fs::file_type::directory) fs::create_directories(target, error);
        if (entry.type == fs::file_type::symlink) copyLink(entry.path, target, error);
        if (entry.type == fs::file_type::regular) copyFile(entry.path, target, error);
        return error ? target.string() + ": " + error.message() : std::string();
    }

private:
    void copyLink(const std::string& path, const fs::path& target, std::error_code& error) const {
        const auto name = fs::read_symlink(from_ / path, error);
        // Nothing of a recording is absolute; this would only tell of the machine where it lay.
        if (!error && name.is_relative()) fs::create_symlink(replacer_.replaced(name.string()), target, error);
    }

    void copyFile(const std::string& path, const fs::path& target, std::error_code& error) const {
        const auto before = tree_.bytes(path, largestFile).valueOr({});
        const auto content = replaced(baseName(path), before);
        std::ofstream file(target, std::ios::binary);
        file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
        if (!file.flush()) error = std::make_error_code(std::errc::io_error);
    }

    /** A neighbour's own texts are words that stand elsewhere with another meaning, so they are replaced in their
     * places alone. What cannot be told apart is left out. */
    std::string withOtherTexts(const std::string& lines) const {
        auto neighbours = parseNeighbours(lines).valueOr({});
        for (auto& neighbour : neighbours)
            for (auto* text : {&neighbour.chassis, &neighbour.portDescription})
                if (const auto other = others_.find(*text); other != others_.end()) *text = other->second;
        return formatNeighbours(neighbours);
    }

    /** Serial numbers at their places first: there they end where the next item begins, without a mark between. */
    Bytes replaced(const std::string& fileName, const Bytes& before) const {
        std::string content(before.begin(), before.end());
        if (fileName == neighboursFile) content = withOtherTexts(content);
        for (const auto& [at, size] : findSerialPlaces(fileName, before))
            if (const auto other = others_.find(content.substr(at, size)); other != others_.end())
                content.replace(at, size, other->second.substr(0, size));
        content = replacer_.replaced(content);
        Bytes after(content.begin(), content.end());
        keepChecksums(fileName, before, after);
        return after;
    }

    const SysTree tree_;
    const fs::path from_;
    const fs::path to_;
    const Replacer replacer_;
    std::map<std::string, std::string> others_;
};

/** @return an error that names the file, or an empty text. */
std::string collectAll(const fs::path& from, const std::vector<Entry>& entries, Identities& identities) {
    const SysTree tree = SysTree(from).forOneLook();
    for (const auto& entry : entries) {
        if (entry.type != fs::file_type::regular) {
            identities.collect(entry.path + "/", {});
            continue;
        }
        const auto content = tree.bytes(entry.path, largestFile + 1);
        const auto place = (from / entry.path).string();
        if (!content) return place + ": " + content.absence().reason;
        if (content->size() > largestFile) return place + ": longer than anything that is recorded";
        identities.collect(entry.path, *content);
    }
    return {};
}

std::string prepare(const fs::path& to) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(to, error)) && !fs::is_empty(to, error))
        return to.string() + ": exists and is not empty";
    fs::create_directories(to, error);
    return error ? to.string() + ": " + error.message() : std::string();
}

} // namespace

AnonymisedOrError anonymise(const fs::path& from, const fs::path& to, const std::vector<std::string>& hostNames,
                            const Pseudonyms::Random& random) {
    auto listed = listEntries(from);
    if (auto* error = std::get_if<std::string>(&listed)) return std::move(*error);
    const auto& entries = std::get<std::vector<Entry>>(listed);
    Identities identities(hostNames);
    if (auto error = collectAll(from, entries, identities); !error.empty()) return error;
    auto replacements = identities.choose(random);
    if (!replacements) return from.string() + ": no other names can be found for all that it has";
    if (auto error = prepare(to); !error.empty()) return error;
    const Copier copier(from, to, *replacements);
    for (const auto& entry : entries)
        if (auto error = copier.copy(entry); !error.empty()) return error;
    return std::move(*replacements);
}

std::string writeReplacements(const std::vector<Replacement>& replacements, const fs::path& file) {
    std::string lines;
    for (const auto& [kind, original, other] : replacements)
        lines += std::string(kind) + '\t' + original + '\t' + other + '\n';
    const Descriptor opened(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    const auto failed = [&] { return file.string() + ": " + std::generic_category().message(errno); };
    if (!opened.opened()) return failed();
    for (std::size_t at = 0; at < lines.size();) {
        const auto written = ::write(opened.get(), lines.data() + at, lines.size() - at);
        if (written < 0 && errno != EINTR) return failed();
        if (written > 0) at += static_cast<std::size_t>(written);
    }
    return {};
}

} // namespace tavik::host
