// Attributes that are read again and again, by descriptors that stay open.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "tavik/host/attribute.h"
#include "tavik/host/sys_tree.h"

namespace tavik::host {

/** Saves the way to a file at each further read. Takes at most a quarter of the descriptors that the process may have;
 *  other files are opened each time. Callable from several threads at once. */
class HeldAttributes {
public:
    explicit HeldAttributes(const SysTree& tree);

    /** As SysTree::text. A file that has gone, or has another one in its place, is looked for by its path again. */
    Attribute<std::string> text(const std::string& path);

    /** As SysTree::exists. */
    bool exists(const std::string& path);

    /** Closes all: after this the files that are asked for are those that stand at their paths. */
    void clear();

private:
    std::shared_ptr<const Descriptor> find(const std::string& path);
    void keep(const std::string& path, const std::shared_ptr<const Descriptor>& opened);

    const SysTree tree_;
    const std::size_t most_;
    std::mutex mutex_;                                              // guards what follows
    std::map<std::string, std::shared_ptr<const Descriptor>> held_; ///< files and folders
};

} // namespace tavik::host
