#pragma once
// Tasks: a body run on its own thread, with a stop request inherited from the task that
// started it. Destroying a Task or TaskGroup cancels what is still running and waits for it;
// the blocking primitives of base (sleep, HTTP, MainQueue::runSync) end promptly once
// cancelled, so that wait is short.

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/cancellation.h"

namespace nuvrel::base {

namespace detail {
inline std::shared_ptr<CancellationState> childOfCurrent() {
    auto parent = currentCancellation();
    return parent ? parent->makeChild() : CancellationState::make();
}
}  // namespace detail

template <class T>
class Task {
public:
    // Starts `body` at once on a new thread.
    template <class F>
    explicit Task(F&& body) : state_(std::make_shared<State>()) {
        state_->cancellation = detail::childOfCurrent();
        thread_ = std::thread([state = state_, body = std::forward<F>(body)]() mutable {
            CancellationScope scope(state->cancellation);
            try {
                if constexpr (std::is_void_v<T>) {
                    body();
                } else {
                    state->result.emplace(body());
                }
            } catch (...) {
                state->error = std::current_exception();
            }
            std::lock_guard lock(state->mutex);
            state->finished = true;
            state->finishedChanged.notify_all();
        });
    }

    Task(Task&&) noexcept = default;
    Task& operator=(Task&& other) noexcept {
        if (this != &other) {
            stopAndJoin();
            state_ = std::move(other.state_);
            thread_ = std::move(other.thread_);
        }
        return *this;
    }
    ~Task() { stopAndJoin(); }

    void cancel() const { state_->cancellation->cancel(); }
    bool isCancelled() const { return state_->cancellation->isCancelled(); }
    bool isFinished() const {
        std::lock_guard lock(state_->mutex);
        return state_->finished;
    }

    // Waits for the body and gives its result, or rethrows what it threw. Call once.
    T value() {
        if (thread_.joinable()) thread_.join();
        if (state_->error) std::rethrow_exception(state_->error);
        if constexpr (!std::is_void_v<T>) return std::move(*state_->result);
    }

private:
    struct Empty {};
    struct State {
        std::shared_ptr<CancellationState> cancellation;
        std::conditional_t<std::is_void_v<T>, std::optional<Empty>, std::optional<T>> result;
        std::exception_ptr error;
        std::mutex mutex;
        std::condition_variable finishedChanged;
        bool finished = false;
    };

    void stopAndJoin() {
        if (thread_.joinable()) {
            state_->cancellation->cancel();
            thread_.join();
        }
    }

    std::shared_ptr<State> state_;
    std::thread thread_;
};

// Children that run at once. Results are collected in completion order with next(), or in
// the order the children were added with waitAll().
template <class T>
class TaskGroup {
    static_assert(!std::is_void_v<T>, "a group collects values; use bool or a small struct");

public:
    TaskGroup() : state_(std::make_shared<State>()) {
        state_->cancellation = detail::childOfCurrent();
    }
    TaskGroup(const TaskGroup&) = delete;
    TaskGroup& operator=(const TaskGroup&) = delete;
    ~TaskGroup() {
        cancelAll();
        for (auto& thread : threads_) thread.join();
    }

    template <class F>
    void add(F&& body) {
        const std::size_t index = threads_.size();
        {
            std::lock_guard lock(state_->mutex);
            state_->slots.emplace_back();
        }
        auto cancellation = state_->cancellation->makeChild();
        threads_.emplace_back(
            [state = state_, index, cancellation, body = std::forward<F>(body)]() mutable {
                CancellationScope scope(cancellation);
                std::optional<T> result;
                std::exception_ptr error;
                try {
                    result.emplace(body());
                } catch (...) {
                    error = std::current_exception();
                }
                std::lock_guard lock(state->mutex);
                state->slots[index].result = std::move(result);
                state->slots[index].error = error;
                state->finishedOrder.push_back(index);
                state->changed.notify_all();
            });
    }

    // The next child to finish: its index in the order of add() and its value; rethrows what
    // that child threw. Nothing once every child was collected.
    std::optional<std::pair<std::size_t, T>> next() {
        std::unique_lock lock(state_->mutex);
        if (collected_ == threads_.size()) return std::nullopt;
        state_->changed.wait(lock, [&] { return state_->finishedOrder.size() > collected_; });
        const std::size_t index = state_->finishedOrder[collected_++];
        auto& slot = state_->slots[index];
        if (slot.error) std::rethrow_exception(slot.error);
        return std::make_pair(index, std::move(*slot.result));
    }

    // Every value in the order of add(). The first failure cancels the other children, and is
    // rethrown once they have stopped.
    std::vector<T> waitAll() {
        std::vector<std::optional<T>> values(threads_.size());
        std::exception_ptr firstError;
        while (true) {
            try {
                auto item = next();
                if (!item) break;
                values[item->first] = std::move(item->second);
            } catch (...) {
                if (!firstError) {
                    firstError = std::current_exception();
                    cancelAll();
                }
            }
        }
        if (firstError) std::rethrow_exception(firstError);
        std::vector<T> out;
        out.reserve(values.size());
        for (auto& value : values) out.push_back(std::move(*value));
        return out;
    }

    void cancelAll() { state_->cancellation->cancel(); }
    std::size_t size() const { return threads_.size(); }

private:
    struct Slot {
        std::optional<T> result;
        std::exception_ptr error;
    };
    struct State {
        std::shared_ptr<CancellationState> cancellation;
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<Slot> slots;
        std::vector<std::size_t> finishedOrder;
    };

    std::shared_ptr<State> state_;
    std::vector<std::thread> threads_;
    std::size_t collected_ = 0;
};

}  // namespace nuvrel::base
