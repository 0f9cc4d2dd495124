// A server that is killed in the middle of a flash update: the fleet is whole, and nothing stands in the next one's
// way.
#include "program.h"
#include "waiting_client.h"

#include "cimhost/storage/descriptor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/file.h>
#include <sys/inotify.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace cimhost {
namespace {

using testing::AnyOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing_support::cimhost;
using testing_support::Process;
using testing_support::urlOf;

const std::string start = "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">";
const std::string nameSpace = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"merolt_cmpi\"/>"
                              "</LOCALNAMESPACEPATH>";
const std::string question = start + "<SIMPLEREQ><IMETHODCALL NAME=\"EnumerateInstanceNames\">" + nameSpace +
                             "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Merolt_NIC_PortController\"/>"
                             "</IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";

std::string updateWith(const std::filesystem::path& image) {
    return start + "<SIMPLEREQ><METHODCALL NAME=\"InstallFromURI\"><LOCALCLASSPATH>" + nameSpace +
           "<CLASSNAME NAME=\"Merolt_NIC_SoftwareInstallationService\"/></LOCALCLASSPATH>"
           "<PARAMVALUE NAME=\"URI\" PARAMTYPE=\"string\"><VALUE>" +
           image.string() +
           "</VALUE></PARAMVALUE><PARAMVALUE NAME=\"Target\" PARAMTYPE=\"reference\"><VALUE.REFERENCE>"
           "<INSTANCENAME CLASSNAME=\"Merolt_NIC_PortController\"><KEYBINDING NAME=\"DeviceID\">"
           "<KEYVALUE VALUETYPE=\"string\">MC1020R4K00317_NIC</KEYVALUE></KEYBINDING></INSTANCENAME>"
           "</VALUE.REFERENCE></PARAMVALUE></METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

/// The answer; empty if the server was gone before.
std::string ask(const std::string& url, const std::string& message) {
    try {
        const std::vector<http::Field> fields = {{"Content-Type", "application/xml"}, {"CIMOperation", "MethodCall"}};
        return testing_support::postAndWait(http::parseUrl(url + "/cimom").value(), fields, message).body;
    } catch (const std::runtime_error&) {
        return "";
    }
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// What happens to files beside the fleet, and to its name, as it happens.
class Signs {
public:
    explicit Signs(const std::filesystem::path& folder) : queue(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        ::inotify_add_watch(queue, folder.c_str(), IN_CREATE | IN_ATTRIB | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVE);
    }
    ~Signs() { ::close(queue); }
    Signs(const Signs&) = delete;
    Signs& operator=(const Signs&) = delete;

    /// Those since the last call.
    int take() {
        int count = 0;
        alignas(inotify_event) std::array<char, 4096> bytes;
        for (ssize_t length = 0; (length = ::read(queue, bytes.data(), bytes.size())) > 0;) {
            for (ssize_t at = 0; at < length;) {
                inotify_event event;
                std::memcpy(&event, bytes.data() + at, sizeof event);
                at += static_cast<ssize_t>(sizeof event + event.len);
                ++count;
            }
        }
        return count;
    }

    void waitForSome() const {
        pollfd asked{queue, POLLIN, 0};
        ::poll(&asked, 1, 1);
    }

private:
    const int queue;
};

class KilledUpdate : public testing::Test {
protected:
    KilledUpdate() {
        std::string name = (std::filesystem::temp_directory_path() / "cimhost_killed_XXXXXX").string();
        folder = ::mkdtemp(name.data());
        // The provider's own files are made elsewhere, so that all signs in the folder are the update's.
        std::filesystem::create_directory(folder / "fleet");
        fleet = folder / "fleet" / "fleet.json";
        std::filesystem::copy_file(FLEET, fleet);
    }
    ~KilledUpdate() override { std::filesystem::remove_all(folder); }

    std::filesystem::path makeImage(const std::string& version) const {
        const auto image = folder / ("image-" + version);
        const auto made = cimhost({"image", "make", image.string(), "--model", "MC1020", "--image-version", version,
                                   "--date", "2013-04-30", "--firmware", "8.1.0"});
        EXPECT_EQ(made.status, 0) << made.errors;
        return image;
    }

    std::unique_ptr<Process> startServer() {
        auto server =
            std::make_unique<Process>(std::vector<std::string>{PROGRAM, "--fleet", fleet.string(), "serve", "--listen",
                                                               "127.0.0.1:0", "--state", "", "--anonymous-writes"});
        url = urlOf(*server);
        EXPECT_NE(url, "") << server->errors();
        return server;
    }

    void update(const std::filesystem::path& image) const {
        EXPECT_THAT(ask(url, updateWith(image)), ContainsRegex("<RETURNVALUE[^>]*>[ \n]*<VALUE>0</VALUE>"));
    }

    /// Kills the server at that sign of the update. @return false if the update had no so many.
    bool killInUpdate(Process& server, const std::filesystem::path& image, int sign) const {
        Signs signs(fleet.parent_path());
        const auto answer = std::async(std::launch::async, [&] { return ask(url, updateWith(image)); });
        int seen = 0;
        for (bool isOver = false; seen < sign && !isOver; seen += signs.take()) {
            signs.waitForSome();
            isOver = answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        }
        server.signal(SIGKILL);
        server.wait();
        return seen >= sign;
    }

    /// Kills the server while its update waits for another writer.
    void killBeforeUpdate(Process& server, const std::filesystem::path& image) const {
        const Descriptor lock(::open((fleet.string() + ".lock").c_str(), O_RDWR | O_CLOEXEC));
        ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
        const auto answer = std::async(std::launch::async, [&] { return ask(url, updateWith(image)); });
        while (!hasOpen(server, fleet.string() + ".lock") &&
               answer.wait_for(std::chrono::milliseconds(1)) == std::future_status::timeout) {
        }
        server.signal(SIGKILL);
        server.wait();
    }

    static bool hasOpen(const Process& server, const std::string& file) {
        std::error_code error;
        const auto descriptors = std::filesystem::path("/proc") / std::to_string(server.pid()) / "fd";
        for (const auto& entry : std::filesystem::directory_iterator(descriptors, error)) {
            if (std::filesystem::read_symlink(entry.path(), error) == file) return true;
        }
        return false;
    }

    std::filesystem::path folder;
    std::filesystem::path fleet;
    std::string url;
};

TEST_F(KilledUpdate, LeavesTheOldFleetOrTheNewOneAndTheNextServerWorks) {
    const auto oldImage = makeImage("2.2.3");
    const auto newImage = makeImage("2.2.4");
    auto server = startServer();
    update(newImage);
    const std::string newText = contentOf(fleet);
    update(oldImage);
    const std::string oldText = contentOf(fleet);
    ASSERT_NE(oldText, newText);

    killBeforeUpdate(*server, newImage);
    EXPECT_EQ(contentOf(fleet), oldText);
    int sign = 1;
    for (server = startServer(); sign <= 24 && killInUpdate(*server, newImage, sign); ++sign) {
        ASSERT_THAT(contentOf(fleet), AnyOf(oldText, newText)) << "killed at sign " << sign;
        server = startServer();
        EXPECT_THAT(ask(url, question), HasSubstr("<INSTANCENAME"));
        EXPECT_FALSE(std::filesystem::exists(fleet.string() + ".unfinished")) << "killed at sign " << sign;
        update(oldImage);
        ASSERT_EQ(contentOf(fleet), oldText);
    }
    EXPECT_GE(sign, 5) << "signs of an update";
    EXPECT_EQ(contentOf(fleet), newText) << "the last one was not killed before its end";
}

} // namespace
} // namespace cimhost
