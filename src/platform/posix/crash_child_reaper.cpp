#include "platform/posix/crash_child_reaper.h"

#include <signal.h>

#include <atomic>
#include <mutex>

namespace nuvrel::platform::CrashChildReaper {
namespace {

// Static storage: allocated before main, never moves, and lock-free atomics are safe to read
// in a signal handler.
std::atomic<std::int32_t> slots[capacity];
static_assert(std::atomic<std::int32_t>::is_always_lock_free);

constexpr int fatalSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGILL, SIGTRAP};

void terminateIfSet(int slot) {
    const std::int32_t pid = slots[slot].load(std::memory_order_relaxed);
    if (pid > 0) ::kill(pid, SIGTERM);
}

// Only async-signal-safe calls: no allocation, no lock, no object touched but the table.
void onFatalSignal(int signal) {
    terminateIfSet(0);
    terminateIfSet(1);
    terminateIfSet(2);
    terminateIfSet(3);
    terminateIfSet(4);
    terminateIfSet(5);
    terminateIfSet(6);
    terminateIfSet(7);
    static_assert(capacity == 8, "the handler reads the slots unrolled");
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

void installHandler() {
    for (auto& slot : slots) slot.store(0, std::memory_order_relaxed);
    struct sigaction action {};
    action.sa_handler = onFatalSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;
    for (const int signal : fatalSignals) ::sigaction(signal, &action, nullptr);
}

}  // namespace

void registerPID(std::int32_t pid) {
    static std::once_flag setUp;
    std::call_once(setUp, installHandler);
    for (auto& slot : slots) {
        // A compare-exchange, so that two children registered at once never share a slot.
        std::int32_t held = slot.load(std::memory_order_relaxed);
        if (held != 0 && ::kill(held, 0) == 0) continue;
        if (slot.compare_exchange_strong(held, pid, std::memory_order_relaxed)) return;
    }
}

void unregisterPID(std::int32_t pid) {
    for (auto& slot : slots) {
        if (slot.load(std::memory_order_relaxed) == pid) slot.store(0, std::memory_order_relaxed);
    }
}

}  // namespace nuvrel::platform::CrashChildReaper
