// Shows what the host source sees on this machine or in a recorded tree, records what only system calls tell, and makes
// recordings that can be given away.
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include <CLI/CLI.hpp>

#include "tavik/host/anonymise.h"
#include "tavik/host/dump.h"
#include "tavik/host/host_facts.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/host/sys_tree.h"
#include "tavik/recording_folder.h"

namespace {

using namespace tavik::host;

struct Options {
    std::string root;
    std::string recordFolder;
    std::string anonymisedFolder;
    std::string replacedFile;
    std::vector<std::string> hostNames;
    bool asJson = false;
};

void addOptions(CLI::App& application, Options& options) {
    auto* root = application.add_option("--root", options.root, "show a recorded tree in place of this machine");
    application.add_option("--record-queries", options.recordFolder,
                           "write the answers of this machine's kernel below FOLDER/kernel, and show nothing");
    application.add_flag("--json", options.asJson, "show JSON, for tools");
    auto* anonymise = application.add_option("--anonymise", options.anonymisedFolder,
                                             "copy the recorded tree into this folder, with other addresses, names and "
                                             "serial numbers, and show nothing");
    anonymise->needs(root);
    application
        .add_option("--replaced", options.replacedFile, "where to write what was replaced (default: FOLDER.replaced)")
        ->needs(anonymise);
    application.add_option("--host-name", options.hostNames, "a name of a host to replace, too")->needs(anonymise);
}

int failed(const std::string& error) {
    std::cerr << "tavik_host_dump: " << error << '\n';
    return 1;
}

int show(const Options& options) {
    const SysTree tree(options.root.empty() ? "/" : options.root);
    const auto queries = options.root.empty() ? makeLinuxQueries() : makeRecordedQueries(tree);
    HostFacts facts = readHostFacts(tree, *queries);
    addPortFacts(facts, tree, *queries);
    std::cout << (options.asJson ? dumpFactsAsJson(facts) : dumpFacts(facts));
    return 0;
}

int record(const std::string& folder) {
    const auto error = recordQueries(*makeLinuxQueries(), SysTree().names("sys/class/net"), folder);
    return error.empty() ? 0 : failed(error);
}

int copyAnonymised(const Options& options) {
    std::random_device device;
    const auto random = [&device] { return std::uint64_t{device()} << 32 | device(); };
    const auto done = anonymise(options.root, options.anonymisedFolder, options.hostNames, random);
    if (const auto* error = std::get_if<std::string>(&done)) return failed(*error);
    const auto file = options.replacedFile.empty() ? options.anonymisedFolder + ".replaced" : options.replacedFile;
    const auto error = writeReplacements(std::get<std::vector<Replacement>>(done), file);
    return error.empty() ? 0 : failed(error);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App application("Shows the adapters of this machine, or of a tree that record-host.sh made, and why an "
                         "attribute or an interface is missing.");
    Options options;
    addOptions(application, options);
    CLI11_PARSE(application, argc, argv);

    if (const auto problem = options.root.empty() ? std::nullopt : tavik::checkRecording(options.root))
        return failed(problem->message);
    if (!options.anonymisedFolder.empty()) return copyAnonymised(options);
    return options.recordFolder.empty() ? show(options) : record(options.recordFolder);
}
