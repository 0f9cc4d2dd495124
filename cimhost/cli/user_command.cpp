#include "cimhost/cli/command_line.h"
#include "cimhost/cli/password_input.h"
#include "cimhost/cli/users_file.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <string>

namespace cimhost::cli {

namespace {

struct UserOptions {
    std::string file;
    std::string name;
};

void addAdd(CommandLine& line, CLI::App& user) {
    const auto given = std::make_shared<UserOptions>();
    CLI::App& command = line.add(
        "add", "Add a user, or change his password: it is asked for, or the first line of standard input", user);
    command.add_option("FILE", given->file)->required();
    command.add_option("NAME", given->name)->required();
    line.onRun(command, [given](const Settings&) {
        const bool wasThere = setUser(given->file, given->name, askForPassword(given->name));
        std::cout << given->file << ": " << given->name << (wasThere ? " has a new password\n" : " is a user now\n");
        return ok;
    });
}

void addRemove(CommandLine& line, CLI::App& user) {
    const auto given = std::make_shared<UserOptions>();
    CLI::App& command = line.add("remove", "Remove a user", user);
    command.add_option("FILE", given->file)->required();
    command.add_option("NAME", given->name)->required();
    line.onRun(command, [given](const Settings&) {
        removeUser(given->file, given->name);
        std::cout << given->file << ": " << given->name << " is no user any more\n";
        return ok;
    });
}

void addList(CommandLine& line, CLI::App& user) {
    const auto given = std::make_shared<UserOptions>();
    CLI::App& command = line.add("list", "Show the users", user);
    command.add_option("FILE", given->file)->required();
    line.onRun(command, [given](const Settings&) {
        for (const std::string& name : usersIn(given->file))
            std::cout << name << '\n';
        return ok;
    });
}

} // namespace

void addUser(CommandLine& line) {
    CLI::App& user = line.addGroup("user", "Make and change the file of users that serve --credentials reads");
    addAdd(line, user);
    addRemove(line, user);
    addList(line, user);
}

} // namespace cimhost::cli
