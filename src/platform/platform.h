// What the provider asks of the operating system, in one replaceable place: time, sleeping, the host's identity, the
// install location and files.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace merolt::platform {

/// Lets one thread end another's wait early. A notification that nobody waits for is kept for the next wait.
class Wakeup {
public:
    void notify();
    /// Returns after the time, or as soon as there was a notification.
    void waitFor(unsigned milliseconds);

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool isNotified = false;
};

/// What the host's administrator sets for the provider: lines of a name, "=" and a value.
constexpr const char* settingsFile = "/etc/merolt/cim-provider.conf";

/// The operating system as the provider sees it. Tests put another one in its place.
class Services {
public:
    virtual ~Services() = default;

    virtual std::time_t now();
    virtual void sleepMilliseconds(unsigned milliseconds);
    /// Sleeps until the time is over or somebody notifies.
    virtual void sleepUntilNotified(Wakeup& wakeup, unsigned milliseconds);
    /// Whether the fixed sleeps at the provider's start and end give way to what they stand for, as MEROLT_CNA_WAITS
    /// asks with "events". For a process that starts the provider for one question, and for tests.
    virtual bool waitsForEvents();

    /// The host's name as the system reports it, short or qualified; nothing if the system gives none.
    virtual std::optional<std::string> hostName();
    /// The first address that name resolution gives for the name, as bytes; nothing if it does not resolve.
    virtual std::optional<std::vector<std::uint8_t>> firstAddress(const std::string& name);

    /// Where the product is installed: MEROLT_CNA_INSTALL_LOCATION, else the line InstallLocation= of
    /// /etc/merolt/cim-provider.conf, else empty. At most 259 characters; a longer one counts as none.
    virtual std::string installLocation();

    /// Bytes of the file, 0 if there is none.
    virtual long long fileSize(const char* path);

    /// Whether anything of that name is there, a folder too; a link counts as what it leads to.
    virtual bool fileExists(const char* path);
    /// Where the server runs; empty if the system cannot tell.
    virtual std::string workingDirectory();
    /// Makes target a copy of source, which is a local file's name, perhaps behind "file://". The copy is this user's
    /// alone, whatever the rights of the source; it takes the place of an earlier file or link of that name. The source
    /// is opened once: what is copied is what was looked at.
    /// @param most the bytes of the largest file that is copied. Of a larger one nothing is written.
    /// @return the bytes of the source; above most, as far as it was looked at. Nothing for a folder or a device,
    /// another scheme, or a copy that could not be finished; no part of one is left behind.
    virtual std::optional<std::uint64_t> copyFile(const char* source, const char* target, std::uint64_t most);

    /// @return 0, or the error number of a system that cannot make another mutex.
    virtual int mutexAvailable();

    /// The value of the first line of settingsFile that begins with that name and "="; empty if there is none.
    virtual std::string setting(const std::string& name);

    /// The name by which the administrator wants the host published: MEROLT_CNA_SYSTEM_NAME, else the line SystemName=
    /// of settingsFile, else empty. As it was written.
    virtual std::string wantedSystemName();
};

/// The services in use: the system's own unless replaced.
Services& services();

/// @param replacement outlives its use; null brings the system's own back.
void replaceServices(Services* replacement);

/// Waits that many times 1000 milliseconds.
void sleepSeconds(unsigned seconds);

} // namespace merolt::platform
