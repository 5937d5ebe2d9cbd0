#include "app/interruptible.h"

#include <pthread.h>
#include <signal.h>

#include <exception>
#include <thread>

#include "base/task.h"

namespace nuvrel::app {

void runUntilInterrupted(const std::function<void()>& body) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    base::Task<void> running(body);
    // SIGUSR1 only wakes the watcher when the job ended by itself.
    std::thread watcher([&] {
        int signal = 0;
        if (sigwait(&signals, &signal) == 0 && signal != SIGUSR1) running.cancel();
    });
    std::exception_ptr failure;
    try {
        running.value();
    } catch (...) {
        failure = std::current_exception();
    }
    pthread_kill(watcher.native_handle(), SIGUSR1);
    watcher.join();
    if (failure) std::rethrow_exception(failure);
}

}  // namespace nuvrel::app
