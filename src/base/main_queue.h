#pragma once
// The main actor: jobs that must run one at a time on the program's main thread (the
// interface state, run control). The command-line program drives it with run()/runUntil();
// the panel drives it from its event loop.

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>

#include "base/cancellation.h"

namespace nuvrel::base {

class MainQueue {
public:
    // The constructing thread is the main thread.
    MainQueue();
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;

    bool isMainThread() const { return std::this_thread::get_id() == mainThread_; }

    // Queues a job; never blocks. Safe from any thread.
    void post(std::function<void()> job);

    // Runs `fn` on the main thread and gives its result. On the main thread it runs inline.
    // Elsewhere it waits; if the calling task is cancelled before the job started, the job is
    // dropped and Cancelled is thrown.
    template <class F>
    std::invoke_result_t<F> runSync(F&& fn);

    // Runs jobs on the calling (main) thread until stop().
    void run();
    // Runs jobs until `done()` is true; it is checked before waiting and after every job.
    void runUntil(const std::function<bool()>& done);
    // Runs the jobs already queued without waiting for more; gives how many ran.
    std::size_t drain();
    void stop();
    // Makes a waiting runUntil check its condition again.
    void wake();
    // Called after every post() and wake(), on the calling thread, so that an event loop of
    // another kind (the panel's) can drain the queue when work arrives. Set it before any
    // other thread posts.
    void setWakeListener(std::function<void()> listener) { wakeListener_ = std::move(listener); }

private:
    std::optional<std::function<void()>> take(const std::function<bool()>& done);

    const std::thread::id mainThread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> jobs_;
    bool stopped_ = false;
    bool woken_ = false;
    std::function<void()> wakeListener_;
};

template <class F>
std::invoke_result_t<F> MainQueue::runSync(F&& fn) {
    using R = std::invoke_result_t<F>;
    if (isMainThread()) return fn();

    struct Call {
        std::mutex mutex;
        std::condition_variable changed;
        bool started = false, done = false, abandoned = false;
        std::conditional_t<std::is_void_v<R>, bool, std::optional<R>> result{};
        std::exception_ptr error;
    };
    auto call = std::make_shared<Call>();
    auto* body = &fn;  // valid while this frame waits; an abandoned call never touches it
    post([call, body] {
        {
            std::lock_guard lock(call->mutex);
            if (call->abandoned) return;
            call->started = true;
        }
        try {
            if constexpr (std::is_void_v<R>) {
                (*body)();
            } else {
                call->result.emplace((*body)());
            }
        } catch (...) {
            call->error = std::current_exception();
        }
        std::lock_guard lock(call->mutex);
        call->done = true;
        call->changed.notify_all();
    });

    bool cancelled = false;
    CancelCallback onCancel([call, &cancelled] {
        std::lock_guard lock(call->mutex);
        cancelled = true;
        call->changed.notify_all();
    });
    std::unique_lock lock(call->mutex);
    call->changed.wait(lock, [&] { return call->done || (cancelled && !call->started); });
    if (!call->done) {
        call->abandoned = true;
        throw Cancelled();
    }
    if (call->error) std::rethrow_exception(call->error);
    if constexpr (!std::is_void_v<R>) return std::move(*call->result);
}

}  // namespace nuvrel::base
