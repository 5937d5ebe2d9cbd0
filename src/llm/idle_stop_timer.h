#pragma once
// Stops a dedicated model server once it has been idle for a while, to give its memory
// back. Every call to the server disarms the timer first and arms it anew when it ends, so
// that back-to-back calls find a warm server.
//
// Threading: an actor: one mutex, never held across the sleep, the stop or a join. The
// timer runs on a task of its own that no caller's stop request reaches.

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "base/sleep.h"
#include "base/task.h"

namespace nuvrel::llm {

// What a backend needs of its server's manager; LlamaServerManager through ManagerHandle.
class ServerManaging {
public:
    virtual ~ServerManaging() = default;
    // Blocks until the server answers; throws as LlamaServerManager::ensureRunning.
    virtual void ensureRunning() = 0;
    // Stops the server; the next ensureRunning starts it again.
    virtual void stop() = 0;
};
using SummaryServerManaging = ServerManaging;
using EmbeddingServerManaging = ServerManaging;

class IdleStopTimer {
public:
    // No interval: the server stays up once started.
    IdleStopTimer(std::shared_ptr<ServerManaging> manager, std::optional<double> intervalSeconds,
                  base::SleepFn sleepFn = base::liveSleep);
    ~IdleStopTimer();
    IdleStopTimer(const IdleStopTimer&) = delete;
    IdleStopTimer& operator=(const IdleStopTimer&) = delete;

    // Cancels a pending stop; it does not wait for a stop that has begun.
    void disarm();
    // Starts the wait anew; when it ends uncancelled, the manager is stopped.
    void arm();

    // Runs `call` with the server up: disarm, ensureRunning, call, and arm however it ends.
    template <class Call>
    auto withServer(Call&& call) {
        disarm();
        struct Rearm {
            IdleStopTimer& timer;
            ~Rearm() { timer.arm(); }
        } rearm{*this};
        manager_->ensureRunning();
        return call();
    }

    ServerManaging& manager() const { return *manager_; }

private:
    const std::shared_ptr<ServerManaging> manager_;
    const std::optional<double> intervalSeconds_;
    const base::SleepFn sleepFn_;
    std::mutex mutex_;
    std::unique_ptr<base::Task<void>> idleStopTask_;
};

}  // namespace nuvrel::llm
