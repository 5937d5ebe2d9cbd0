#pragma once
// Cooperative, implicit cancellation. Every task has a CancellationState, installed as the
// thread's current one while the task runs; children share their parent's stop request.
// Code asks isCancelled() or calls checkCancellation(); blocking primitives register a
// CancelCallback so that a stop request wakes them at once.

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace nuvrel::base {

// Thrown when the current task was asked to stop. Catch-all handlers rethrow it first.
struct Cancelled : std::exception {
    const char* what() const noexcept override { return "cancelled"; }
};

class CancellationState : public std::enable_shared_from_this<CancellationState> {
public:
    static std::shared_ptr<CancellationState> make();
    // A state that is cancelled whenever this one is (now or later).
    std::shared_ptr<CancellationState> makeChild();
    ~CancellationState();

    CancellationState(const CancellationState&) = delete;
    CancellationState& operator=(const CancellationState&) = delete;

    void cancel();
    bool isCancelled() const;

    using CallbackID = std::uint64_t;
    // Runs `callback` once when cancelled; at once, on this thread, if already cancelled.
    // Callbacks run on the thread that cancels and must not block.
    CallbackID addCallback(std::function<void()> callback);
    // After this returns the callback is not running and will not run.
    void removeCallback(CallbackID id);

private:
    CancellationState() = default;

    mutable std::mutex mutex_;
    std::condition_variable callbackDone_;
    bool cancelled_ = false;
    CallbackID nextID_ = 1;
    std::map<CallbackID, std::function<void()>> callbacks_;
    std::thread::id runningCallbackThread_{};
    CallbackID runningCallback_ = 0;
    std::shared_ptr<CancellationState> parent_;
    CallbackID parentLink_ = 0;
};

// The cancellation state of the task running on this thread; null outside any task.
std::shared_ptr<CancellationState> currentCancellation();

// True when the current task was asked to stop.
bool isCancelled();
// Throws Cancelled when the current task was asked to stop.
void checkCancellation();

// The first line of every catch-all handler: passes a cancellation on unchanged, so that it
// always ends as the outcome cancelled, never as an error. Only inside a handler.
void rethrowIfCancelled();

// Installs `state` as the thread's current cancellation for the scope's lifetime.
class CancellationScope {
public:
    explicit CancellationScope(std::shared_ptr<CancellationState> state);
    ~CancellationScope();
    CancellationScope(const CancellationScope&) = delete;
    CancellationScope& operator=(const CancellationScope&) = delete;

private:
    std::shared_ptr<CancellationState> previous_;
};

// Registers a callback on the current task for the object's lifetime. With no current task,
// nothing is registered.
class CancelCallback {
public:
    explicit CancelCallback(std::function<void()> callback);
    ~CancelCallback();
    CancelCallback(const CancelCallback&) = delete;
    CancelCallback& operator=(const CancelCallback&) = delete;

private:
    std::shared_ptr<CancellationState> state_;
    CancellationState::CallbackID id_ = 0;
};

}  // namespace nuvrel::base
