// A CIM server for tests that is another one than cimhost in all that the CMPI tables leave open. The tests' requests,
// made of cimhost's objects, go through it: what the provider sees are objects, tables and threads of this server's
// own, and what it returns is copied back. A test that passes with cimhost alone has found a provider that takes one
// server's habits for the rules.
//
// | subject                   | cimhost                                | here                                         |
// |---------------------------|----------------------------------------|----------------------------------------------|
// | CMPIBroker                | five words, hdl set, may be copied     | part of a larger block, hdl null; every      |
// |                           |                                        | function wants the address that was handed   |
// |                           |                                        | out                                          |
// | versions                  | 200 everywhere                         | tables of objects and makers 1, broker 0     |
// | size of tables            | level 2.0                              | level 1.0: no slot behind it                 |
// | joinThread, exitThread,   | joinThread, threadSleep and            | all five null                                |
// | cancelThread,             | signalCondition are there              |                                              |
// | threadSleep,              |                                        |                                              |
// | signalCondition           |                                        |                                              |
// | object                    | larger than its two words, hdl points  | two words in a block of their own; hdl       |
// |                           | somewhere                              | points nowhere                               |
// | life of an object         | its request                            | its request, or until it is released; then   |
// |                           |                                        | its memory is dead and a use is a breach     |
// | a clone                   | may stay for ever                      | must have been released at the end           |
// | status of a call          | always written                         | written when the call failed                 |
// | message of a status       | sometimes                              | never                                        |
// | absent property, argument | 12, state 0x0500                       | 6, state 0x0400                              |
// | state of a key            | 0x0200                                 | 0                                            |
// | number as a key           | sint64                                 | uint64 or sint64, as its sign                |
// | n-th key, property, entry | in the order of setting                | by name                                      |
// | namespace, host not set   | the empty string                       | no string                                    |
// | newString(NULL)           | none                                   | a string whose text is null                  |
// | a string in an array      | copied                                 | the pointer is kept                          |
// | chars into a string array | 13 with a message                      | taken                                        |
// | beyond an array's end     | 12                                     | get: 0 with state 0x8000; set: 1             |
// | array of no elements      | stays empty                            | grows                                        |
// | value of another type     | 61 from the class                      | taken; a breach when it is copied back       |
// | than the class says       |                                        |                                              |
// | setPropertyFilter         | drops the others now and later         | kept, and applied to what is returned        |
// | class name that is none   | classPathIsA gives 5                   | false                                        |
// | newDateTimeFromBinary     | reads in UTC                           | reads in the server's zone                   |
// | entries of a context      | as the test sets them, without case    | more of the server's own, with case          |
// | context never attached    | cannot be given back                   | can be released                              |
// | thread                    | runs at once, is a pthread             | runs late, is a number                       |
// | makers on a thread that   | work, counted                          | work, but are a breach                       |
// | is not attached           |                                        |                                              |
// | deliverIndication without | what the test says                     | 1                                            |
// | a subscription            |                                        |                                              |
// | null where none may be    | 60 or 4                                | 60 or 4, and a breach                        |
// | texts and lists of a call | the caller's                           | dead behind the call                         |
#pragma once

#include "host.h"

#include "cmpift.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace foreign_server {

struct ContextObject;
class Scope;
struct Interfaces;

class Server {
public:
    /// One at a time.
    explicit Server(Host host);
    /// Waits for the provider's threads. A clone that was not released by then is a breach.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    static Server& current();
    /// Null if there is none.
    static Server* ifAny() noexcept;

    /// What the provider is handed.
    CMPIBroker* broker() noexcept;

    /// Calls a factory with this server's broker. What comes back serves requests in the host's objects.
    template <class Interface>
    using Factory = Interface* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
    CMPIInstanceMI* offer(Factory<CMPIInstanceMI> factory, CMPIStatus* hostStatus);
    CMPIAssociationMI* offer(Factory<CMPIAssociationMI> factory, CMPIStatus* hostStatus);
    CMPIMethodMI* offer(Factory<CMPIMethodMI> factory, CMPIStatus* hostStatus);
    CMPIIndicationMI* offer(Factory<CMPIIndicationMI> factory, CMPIStatus* hostStatus);

    /// Shown the path and the result that the provider gets in the next request, and only there.
    void beforeNextRequest(std::function<void(CMPIObjectPath*, CMPIResult*)> watcher);

    /// Contexts that were prepared and neither released nor detached since.
    std::size_t preparedContexts();
    /// Threads whose function has not returned yet.
    std::size_t runningThreads() const noexcept { return running; }
    void waitForThreads();

    // For the tables.

    const Host& host() const noexcept { return home; }
    const FromHost& fromHost() const noexcept { return reader; }
    /// A status of the host's as the provider may see it.
    CMPIStatus toProvider(const CMPIStatus& hostStatus, const char* function);
    /// Whether that is the very broker that was handed out; otherwise a breach.
    bool isOwn(const CMPIBroker* asked, const char* function);
    CMPIContext* prepare(const ContextObject& parent);
    CMPIrc attach(const CMPIContext* context);
    CMPIrc detach(const CMPIContext* context);
    /// Ends a context that was never attached. False if it is not one.
    bool giveBack(const CMPIContext* context);
    void* startThread(void* (*function)(void*), void* argument);
    bool isA(const PathData& path, const char* className);
    CMPIrc deliver(const char* nameSpace, const InstanceData& indication);

    // For the interfaces.

    std::atomic<int> subscriptions = 0;
    void announce(CMPIObjectPath* path, CMPIResult* result);

private:
    struct Block;
    struct Prepared;

    Host home;
    FromHost reader;
    std::unique_ptr<Block> block;
    std::mutex mutex;
    std::unordered_map<const void*, std::unique_ptr<Prepared>> prepared;
    std::vector<std::thread> threads;
    std::atomic<std::size_t> running = 0;
    std::map<std::string, bool> knownTests;
    std::function<void(CMPIObjectPath*, CMPIResult*)> nextWatcher;
    std::unique_ptr<Interfaces> interfaces;
    const std::size_t clonesBefore;
};

} // namespace foreign_server
