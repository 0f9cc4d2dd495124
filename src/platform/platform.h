// What the provider asks of the operating system, in one replaceable place: time, sleeping, the host's identity, the
// install location and files.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace merolt::platform {

/// The operating system as the provider sees it. Tests put another one in its place.
class Services {
public:
    virtual ~Services() = default;

    virtual std::time_t now();
    virtual void sleepMilliseconds(unsigned milliseconds);

    /// The host's name as the system reports it, short or qualified; nothing if the system gives none.
    virtual std::optional<std::string> hostName();
    /// The first address that name resolution gives for the name, as bytes; nothing if it does not resolve.
    virtual std::optional<std::vector<std::uint8_t>> firstAddress(const std::string& name);

    /// Where the product is installed: MEROLT_CNA_INSTALL_LOCATION, else the line InstallLocation= of
    /// /etc/merolt/cim-provider.conf, else empty. At most 259 characters; a longer one counts as none.
    virtual std::string installLocation();

    /// Bytes of the file, 0 if there is none.
    virtual long long fileSize(const char* path);

    /// @return 0, or the error number of a system that cannot make another mutex.
    virtual int mutexAvailable();
};

/// The services in use: the system's own unless replaced.
Services& services();

/// @param replacement outlives its use; null brings the system's own back.
void replaceServices(Services* replacement);

/// Waits that many times 1000 milliseconds.
void sleepSeconds(unsigned seconds);

} // namespace merolt::platform
