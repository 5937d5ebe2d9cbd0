#pragma once
// A one-shot "this task has ended" signal that other tasks can wait on. Unlike joining a
// Task, waiting here can be given up when the waiting task is asked to stop.

#include <condition_variable>
#include <mutex>

#include "base/cancellation.h"

namespace nuvrel::app {

class TaskCompletion {
public:
    void markDone() {
        std::lock_guard lock(mutex_);
        done_ = true;
        changed_.notify_all();
    }

    bool isDone() const {
        std::lock_guard lock(mutex_);
        return done_;
    }

    // Blocks the calling task until markDone(). Throws base::Cancelled if the calling task is
    // asked to stop first.
    void wait() const {
        bool cancelled = false;
        // Registered before the lock is taken: on a task already stopped it runs at once.
        base::CancelCallback onCancel([&] {
            std::lock_guard lock(mutex_);
            cancelled = true;
            changed_.notify_all();
        });
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return done_ || cancelled; });
        if (!done_) throw base::Cancelled();
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool done_ = false;
};

}  // namespace nuvrel::app
