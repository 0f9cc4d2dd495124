// Reads the kernel's attribute files below a root that stands in place of "/": the machine itself or a recorded tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/model.h"

namespace tavik::host {

class Descriptor;
class Folders;

/** All paths are relative to the root ("sys/class/net"). Symbolic links are followed, but never out of the root: a
 *  recorded tree comes from somebody else. Files that are not regular are not opened. Callable from several threads at
 *  once. */
class SysTree {
public:
    /** @param root a folder; a root that does not exist reads as one in which everything is absent. */
    explicit SysTree(const std::filesystem::path& root = "/");

    /** The same tree for one look by one thread: it keeps the folders open that were read last, which saves the
     *  kernel the way to each file. It must not outlive the look, since a folder can be replaced by another one of its
     *  name. */
    SysTree forOneLook() const;

    /** The text of an attribute without its line end and blanks around it. Absent if it cannot be read, is empty,
     *  longer than a page or holds bytes that are not printable ASCII. */
    Attribute<std::string> text(const std::string& path) const;

    /** An unsigned number, decimal or hexadecimal with 0x, of at most this value. */
    Attribute<std::uint64_t> number(const std::string& path, std::uint64_t largest) const;

    /** The first bytes of a file, at most limit. A read that fails half way gives what came before. */
    Attribute<Bytes> bytes(const std::string& path, std::size_t limit) const;

    /** The file, to be read more than once: the kernel makes the text of an attribute anew for each read from its
     *  start. */
    Attribute<std::shared_ptr<const Descriptor>> open(const std::string& path) const;

    /** A folder, to be looked into more than once. */
    Attribute<std::shared_ptr<const Descriptor>> openFolder(const std::string& path) const;

    /** Names in a folder, sorted; empty if there is none. */
    std::vector<std::string> names(const std::string& folder) const;

    /** The path without symbolic links, relative to the root: sys/devices/... for a device link. */
    Attribute<std::string> resolve(const std::string& path) const;

    /** The last part of what a symbolic link names, which need not exist: the driver of a driver link. */
    Attribute<std::string> linkName(const std::string& path) const;

    /** True if something stands there, a link that leads nowhere included. */
    bool exists(const std::string& path) const;

    /** Where another folder stands in the place of the root, such as a recording that was made anew, it is read from
     *  here on. */
    void follow() const;

private:
    explicit SysTree(std::shared_ptr<const Folders> folders);

    std::shared_ptr<const Folders> folders_;
};

/** The text of an attribute, as SysTree::text gives it, from the start of the file wherever it was read before. */
Attribute<std::string> textFromStart(const Descriptor& file);

/** An unsigned number as text(): all of it must be digits. */
Attribute<std::uint64_t> parseNumber(std::string_view text, std::uint64_t largest);

/** The part behind the last slash. */
std::string baseName(const std::string& path);

/** The part in front of the last slash; empty if there is none. */
std::string parentPath(const std::string& path);

} // namespace tavik::host
