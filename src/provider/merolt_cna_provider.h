// The one provider object behind all four CMPI interfaces: its lifecycle, its requests, its polling thread.
#pragma once

#include "inventory/poll_thread_context.h"
#include "platform/threads.h"

#include "CmpiAssociationMI.h"
#include "CmpiIndicationMI.h"
#include "CmpiInstanceMI.h"
#include "CmpiMethodMI.h"

#include <atomic>
#include <cstdint>
#include <optional>

// enableIndications() and disableIndications() take no context and so hide the interface's operations of that name: a
// server's enable and disable calls end in the defaults, and the filter operations drive the gate.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"

class Merolt_CNA_Provider : public CmpiInstanceMI,
                            public CmpiAssociationMI,
                            public CmpiIndicationMI,
                            public CmpiMethodMI {
public:
    /// Sets up log, mutexes and configuration; neither starts the thread nor touches the management library. Ends the
    /// process with status 1 if a mutex cannot be made.
    Merolt_CNA_Provider(const CmpiBroker& providerBroker, const CmpiContext& context);
    ~Merolt_CNA_Provider() override;

    // Every one but createInstance and deleteInstance holds provider_lock for its whole duration.
    CmpiStatus enumInstanceNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop) override;
    CmpiStatus enumInstances(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                             const char** properties) override;
    CmpiStatus getInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                           const char** properties) override;
    CmpiStatus createInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                              const CmpiInstance& instance) override;
    CmpiStatus setInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                           const CmpiInstance& instance, const char** properties) override;
    CmpiStatus deleteInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop) override;

    CmpiStatus associators(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                           const char* assocClass, const char* resultClass, const char* role, const char* resultRole,
                           const char** properties) override;
    CmpiStatus associatorNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                               const char* assocClass, const char* resultClass, const char* role,
                               const char* resultRole) override;
    CmpiStatus references(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                          const char* resultClass, const char* role, const char** properties) override;
    CmpiStatus referenceNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                              const char* resultClass, const char* role) override;

    virtual void enableIndications();
    virtual void disableIndications();

    CmpiStatus authorizeFilter(const CmpiContext& context, const CmpiSelectExp& filter, const char* indicationClass,
                               const CmpiObjectPath& path, const char* user) override;
    CmpiStatus mustPoll(const CmpiContext& context, const CmpiSelectExp& filter, const char* indicationClass,
                        const CmpiObjectPath& path) override;
    CmpiStatus activateFilter(const CmpiContext& context, const CmpiSelectExp& filter, const char* indicationClass,
                              const CmpiObjectPath& path, CmpiBoolean first) override;
    CmpiStatus deActivateFilter(const CmpiContext& context, const CmpiSelectExp& filter, const char* indicationClass,
                                const CmpiObjectPath& path, CmpiBoolean last) override;

    /// What an alarm of the management library leads to: an alert if the port's state is news. Called with
    /// provider_lock held, on the polling thread.
    void m_generateIndication(std::uint32_t deviceNumber, std::uint32_t alarmType, std::uint32_t rsltParam,
                              const char* stringParameter);

    CmpiStatus invokeMethod(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                            const char* methodName, const CmpiArgs& in, CmpiArgs& out) override;

    CmpiStatus initialize(const CmpiContext& context) override;
    /// Stops the thread, clears all lists and ends the management library, if the first build was complete.
    CmpiStatus cleanup(CmpiContext& context) override;
    int isUnloadable() const override;

    /// Whose thread is attached to the server while it runs.
    const PollThreadContext& pollThreadContext() const { return pollThread; }

    /// Set by the polling thread when the first build of all lists is complete.
    std::atomic<std::uint8_t> initialized{0};

private:
    void startPollingLoop(const CmpiContext& context);
    /// Leaves the thread unset, and says so, where the server has none to give.
    void startThread(const CmpiContext& context);
    void joinThread();
    void waitForBuildToBegin();
    void waitForPollingThread();
    /// Returns after the thread has ended, without time limit.
    void stopPollingLoop();
    void stopAndClear();

    std::uint8_t pollingEnabled = 0;
    PollThreadContext pollThread;
    /// While the thread runs its code has to stay, also under a server that closes the library without a clean-up.
    std::optional<merolt::platform::LibraryPin> libraryPin;
};

#pragma GCC diagnostic pop
