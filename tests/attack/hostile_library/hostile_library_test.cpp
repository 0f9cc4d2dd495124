// The provider as servers load it, over a management library that breaks its tree in every way that can be defended
// against: no crash, no hang, no growth, and each object once.
#include "everything.h"
#include "hostile_tree.h"

#include "loading/process_facts.h"
#include "loading/provider_library.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using namespace cimhost;

/// Under a sanitizer memory is larger, and calls take longer.
#ifdef MEROLT_SANITIZED
constexpr long residentLimitKilobytes = 1500 * 1024;
#else
constexpr long residentLimitKilobytes = 256 * 1024;
#endif
/// What ends a hang; a scenario takes a moment.
constexpr unsigned hangSeconds = 100;
/// Objects of a class: the tree has eight functions, and a count may tell 4096 targets that are nowhere for each of the
/// four storage functions together.
constexpr std::size_t largestClass = 4096 + 100;

class WorkingDirectory {
public:
    WorkingDirectory() : place(makeWorkingDirectory()) {}
    ~WorkingDirectory() {
        std::filesystem::current_path("/");
        std::error_code ignored;
        std::filesystem::remove_all(place, ignored);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    std::filesystem::path place;
};

/// A library of that file, loaded under its own name: what needs that name gets this one.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const char* file) : handle(dlopen(file, RTLD_NOW | RTLD_GLOBAL)) {
        if (!handle) throw std::runtime_error(dlerror());
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    long count(const char* function) const {
        auto* const found = reinterpret_cast<long (*)()>(dlsym(handle, function));
        return found ? found() : -1;
    }

private:
    void* handle; // stays: the provider's polling thread may outlive what asks for it
};

class Server {
public:
    Server() : library(loadProvider()) {
        classes.loadFile("root/merolt_cmpi", std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
        classes.addNamespace("root/PG_InterOp");
        broker = std::make_unique<Broker>(classes, BrokerOptions{});
        interfaces.instance = make<CMPIInstanceMI>("Instance");
        interfaces.association = make<CMPIAssociationMI>("Association");
        interfaces.method = make<CMPIMethodMI>("Method");
    }
    ~Server() {
        RequestScope scope(*broker);
        const CMPIContext* context = ContextObject::make(scope.arena());
        interfaces.instance->ft->cleanup(interfaces.instance, context, 1);
        interfaces.association->ft->cleanup(interfaces.association, context, 1);
        interfaces.method->ft->cleanup(interfaces.method, context, 1);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    Tally ask(std::size_t eachClass, const std::string& imageFile) {
        return askForEverything(*broker, classes, interfaces, imageFile, eachClass);
    }

private:
    static const ProviderLibrary& loadProvider() {
        static const ProviderLibrary library(MEROLT_PROVIDER_LIBRARY);
        return library;
    }

    template <class Interface>
    Interface* make(const char* kind) {
        RequestScope scope(*broker);
        CMPIStatus status{CMPI_RC_OK, nullptr};
        Interface* made =
            library.factory<Interface>(kind)(broker->table(), ContextObject::make(scope.arena()), &status);
        if (!made) throw std::runtime_error("no interface");
        return made;
    }

    const ProviderLibrary& library;
    ClassRepository classes;
    std::unique_ptr<Broker> broker;
    Interfaces interfaces;
};

std::vector<std::string> scenarios() {
    std::vector<std::string> names = {"honest"};
    for (const Trick& trick : allTricks())
        names.emplace_back(trick.name);
    const char* seeds = std::getenv("MEROLT_HOSTILE_SEEDS");
    const int count = seeds ? std::atoi(seeds) : 20;
    for (int seed = 1; seed <= count; ++seed)
        names.push_back("seed:" + std::to_string(seed));
    return names;
}

class HostileLibraryTest : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        setenv("TAVIK_HOSTILE", isHonest() ? "" : GetParam().c_str(), 1);
        setenv("MEROLT_CNA_WAITS", "events", 1);
        std::ofstream("meroltcna.properties") << "DebugLog=1\nErrorLog=1\n";
        std::ofstream("image.bin") << "image";
        alarm(hangSeconds);
    }
    void TearDown() override { alarm(0); }

    static bool isHonest() { return GetParam() == "honest"; }

private:
    WorkingDirectory directory;
};

// One process for each: the log's place is that of the process, and what a scenario costs is its own.
TEST_P(HostileLibraryTest, EveryRequestIsAnsweredAndNothingGrows) {
    const LoadedLibrary hostile(MEROLT_HOSTILE_LIBRARY);
    Tally tally;
    {
        Server server;
        // An update takes five seconds.
        tally = server.ask(4, isHonest() ? "image.bin" : "");
    }
    EXPECT_EQ(tally.unfinished, 0U);
    EXPECT_GT(tally.requests, 200U);
    EXPECT_LE(tally.largestClass, largestClass);
    EXPECT_EQ(hostile.count("hostileOutstandingBlocks"), 0) << "what was handed out was not given back";
    EXPECT_EQ(hostile.count("hostileStrangeReturns"), 0) << "given back twice, or never handed out";
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LE(usage.ru_maxrss, residentLimitKilobytes);
    RecordProperty("requests", static_cast<int>(tally.requests));
    RecordProperty("objects", static_cast<int>(tally.objects));
    RecordProperty("kilobytes", static_cast<int>(usage.ru_maxrss));
}

std::string testNameOf(const testing::TestParamInfo<std::string>& row) {
    std::string name = row.param;
    for (char& character : name)
        if (character == '-' || character == ':') character = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, HostileLibraryTest, testing::ValuesIn(scenarios()), testNameOf);

} // namespace
