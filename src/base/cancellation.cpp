#include "base/cancellation.h"

#include <utility>

namespace nuvrel::base {

namespace {
thread_local std::shared_ptr<CancellationState> currentState;
}

std::shared_ptr<CancellationState> CancellationState::make() {
    return std::shared_ptr<CancellationState>(new CancellationState());
}

std::shared_ptr<CancellationState> CancellationState::makeChild() {
    auto child = make();
    child->parent_ = shared_from_this();
    std::weak_ptr<CancellationState> weakChild = child;
    child->parentLink_ = addCallback([weakChild] {
        if (auto strong = weakChild.lock()) strong->cancel();
    });
    return child;
}

CancellationState::~CancellationState() {
    if (parent_) parent_->removeCallback(parentLink_);
}

void CancellationState::cancel() {
    std::unique_lock lock(mutex_);
    if (cancelled_) return;
    cancelled_ = true;
    // Callbacks run outside the lock, one at a time, so that they may cancel other states
    // or remove themselves; removeCallback waits for a running one.
    while (!callbacks_.empty()) {
        auto node = callbacks_.extract(callbacks_.begin());
        runningCallback_ = node.key();
        runningCallbackThread_ = std::this_thread::get_id();
        lock.unlock();
        node.mapped()();
        lock.lock();
        runningCallback_ = 0;
        runningCallbackThread_ = {};
        callbackDone_.notify_all();
    }
}

bool CancellationState::isCancelled() const {
    std::lock_guard lock(mutex_);
    return cancelled_;
}

CancellationState::CallbackID CancellationState::addCallback(std::function<void()> callback) {
    std::unique_lock lock(mutex_);
    if (cancelled_) {
        lock.unlock();
        callback();
        return 0;
    }
    const CallbackID id = nextID_++;
    callbacks_.emplace(id, std::move(callback));
    return id;
}

void CancellationState::removeCallback(CallbackID id) {
    if (id == 0) return;
    std::unique_lock lock(mutex_);
    callbacks_.erase(id);
    callbackDone_.wait(lock, [&] {
        return runningCallback_ != id || runningCallbackThread_ == std::this_thread::get_id();
    });
}

std::shared_ptr<CancellationState> currentCancellation() {
    return currentState;
}

bool isCancelled() {
    return currentState && currentState->isCancelled();
}

void checkCancellation() {
    if (isCancelled()) throw Cancelled();
}

void rethrowIfCancelled() {
    try {
        throw;
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        // Any other failure is the caller's to handle. (Cancelled was passed on just above.)
    }
}

CancellationScope::CancellationScope(std::shared_ptr<CancellationState> state)
    : previous_(std::exchange(currentState, std::move(state))) {}

CancellationScope::~CancellationScope() {
    currentState = std::move(previous_);
}

CancelCallback::CancelCallback(std::function<void()> callback) : state_(currentState) {
    if (state_) id_ = state_->addCallback(std::move(callback));
}

CancelCallback::~CancelCallback() {
    if (state_) state_->removeCallback(id_);
}

}  // namespace nuvrel::base
