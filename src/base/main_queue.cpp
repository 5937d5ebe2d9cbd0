#include "base/main_queue.h"

#include <utility>

namespace nuvrel::base {

MainQueue::MainQueue() : mainThread_(std::this_thread::get_id()) {}

void MainQueue::post(std::function<void()> job) {
    {
        std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
        changed_.notify_all();
    }
    if (wakeListener_) wakeListener_();
}

std::optional<std::function<void()>> MainQueue::take(const std::function<bool()>& done) {
    std::unique_lock lock(mutex_);
    while (true) {
        if (stopped_) return std::nullopt;
        if (!jobs_.empty()) {
            auto job = std::move(jobs_.front());
            jobs_.pop_front();
            return job;
        }
        // The condition may read state that jobs change, so it is checked unlocked.
        woken_ = false;
        lock.unlock();
        if (done && done()) return std::nullopt;
        lock.lock();
        changed_.wait(lock, [&] { return stopped_ || woken_ || !jobs_.empty(); });
    }
}

void MainQueue::run() {
    {
        std::lock_guard lock(mutex_);
        stopped_ = false;
    }
    while (auto job = take(nullptr)) (*job)();
}

void MainQueue::runUntil(const std::function<bool()>& done) {
    while (!done()) {
        auto job = take(done);
        if (!job) return;
        (*job)();
    }
}

std::size_t MainQueue::drain() {
    std::size_t ran = 0;
    while (true) {
        std::function<void()> job;
        {
            std::lock_guard lock(mutex_);
            if (jobs_.empty()) return ran;
            job = std::move(jobs_.front());
            jobs_.pop_front();
        }
        job();
        ++ran;
    }
}

void MainQueue::stop() {
    std::lock_guard lock(mutex_);
    stopped_ = true;
    changed_.notify_all();
}

void MainQueue::wake() {
    {
        std::lock_guard lock(mutex_);
        woken_ = true;
        changed_.notify_all();
    }
    if (wakeListener_) wakeListener_();
}

}  // namespace nuvrel::base
