// Shows what the host source sees on this machine or in a recorded tree, and records what only system calls tell.
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "tavik/host/dump.h"
#include "tavik/host/host_facts.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/host/sys_tree.h"
#include "tavik/recording_folder.h"

int main(int argc, char** argv) {
    using namespace tavik::host;
    CLI::App application("Shows the adapters of this machine, or of a tree that record-host.sh made, and why an "
                         "attribute or an interface is missing.");
    std::string root;
    std::string recordFolder;
    application.add_option("--root", root, "show a recorded tree in place of this machine");
    application.add_option("--record-queries", recordFolder,
                           "write the answers of this machine's kernel below FOLDER/kernel, and show nothing");
    bool asJson = false;
    application.add_flag("--json", asJson, "show JSON, for tools");
    CLI11_PARSE(application, argc, argv);

    if (const auto problem = root.empty() ? std::nullopt : tavik::checkRecording(root)) {
        std::cerr << "tavik_host_dump: " << problem->message << '\n';
        return 1;
    }
    const SysTree tree(root.empty() ? "/" : root);
    const auto queries = root.empty() ? makeLinuxQueries() : makeRecordedQueries(tree);
    if (recordFolder.empty()) {
        const HostFacts facts = readHostFacts(tree, *queries);
        std::cout << (asJson ? dumpFactsAsJson(facts) : dumpFacts(facts));
        return 0;
    }
    const auto error = recordQueries(*queries, tree.names("sys/class/net"), recordFolder);
    if (error.empty()) return 0;
    std::cerr << error << '\n';
    return 1;
}
