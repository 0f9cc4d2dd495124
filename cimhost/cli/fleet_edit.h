// Changes of a fleet file as a command: each leaves a whole and valid file, or the old one, and waits for other
// writers.
#pragma once

#include <string>

namespace cimhost::cli {

enum class LinkState { up, down, testing };
enum class LinkSide { both, storage, ethernet };

struct LinkChange {
    std::string card; ///< serial number, or place in the file from 1
    unsigned port = 1;
    LinkState state = LinkState::up;
    LinkSide side = LinkSide::both; ///< which functions of the port
    std::string file;
};

/// The fleet's text with the change: whole, valid, and the same again when the change is made to it once more. Throws
/// as setLink.
std::string withLink(const std::string& text, const LinkChange& change);

/// Sets the link states of one port: an Ethernet function's link is up, down or testing, a storage function is
/// operational or loopDown and knows no testing. Throws std::runtime_error with the file and what is wrong there: no
/// such card or port, a port without such a function, a card that stands for several copies.
void setLink(const LinkChange& change);

} // namespace cimhost::cli
