#include "base/sleep.h"

#include <condition_variable>
#include <memory>
#include <mutex>

#include "base/cancellation.h"

namespace nuvrel::base {

void liveSleep(std::chrono::nanoseconds duration) {
    struct Wake {
        std::mutex mutex;
        std::condition_variable condition;
        bool woken = false;
    };
    auto wake = std::make_shared<Wake>();
    CancelCallback onCancel([wake] {
        std::lock_guard lock(wake->mutex);
        wake->woken = true;
        wake->condition.notify_all();
    });
    {
        std::unique_lock lock(wake->mutex);
        wake->condition.wait_for(lock, duration, [&] { return wake->woken; });
    }
    checkCancellation();
}

}  // namespace nuvrel::base
