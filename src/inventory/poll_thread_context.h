// The record whose address the polling thread receives.
#pragma once

#include "platform/mutex.h"
#include "platform/platform.h"

#include "CmpiBroker.h"
#include "CmpiContext.h"
#include "cmpios.h"

#include <cstdint>
#include <memory>

class Merolt_CNA_Provider;

/// The provider, once its polling thread runs.
extern Merolt_CNA_Provider* g_Merolt_CNA_Provider;

struct PollThreadContext {
    CmpiBroker* broker = nullptr;
    /// Attached by the thread and handed to deliverIndication; must stay valid as long as the thread runs.
    std::unique_ptr<CmpiContext> context;
    Merolt_CNA_Provider* provider = nullptr;
    CMPI_THREAD_TYPE thread = nullptr;
    /// Guards the two flags behind it, and is the innermost lock.
    std::unique_ptr<merolt::platform::Mutex> mutex;
    /// Set by the thread as its last act.
    std::uint8_t threadDead = 0;
    /// Asks the thread to end; read once a second.
    std::uint8_t killThread = 0;
    /// The system's number of the thread, for servers that cannot join it. Set by the thread before threadDead.
    std::int32_t threadNumber = 0;
    /// Notified when the thread holds provider_lock, or ends without.
    merolt::platform::Wakeup begun;
    /// Notified after threadDead was set.
    merolt::platform::Wakeup ended;

    /// Whether the server made a context to attach the thread with. Only then may the thread make alerts.
    bool canAttach() const { return context && !context->isNull(); }
};
