#pragma once
// Makes sure our model-server children do not outlive a crash of this process. The IDs of up
// to eight children sit in a fixed table that a fatal-signal handler reads: on SIGSEGV,
// SIGABRT, SIGBUS, SIGILL or SIGTRAP it sends SIGTERM to each, then lets the signal take its
// default course, so the exit status stays that of the original fault.
//
// A normal quit stops the children through the server manager; what a SIGKILL leaves
// behind is found by the manager's PID files in the next session.
//
// Thread-safety: both calls may come from any thread. The table has no lock because a signal
// handler reads it; a crash during a write can at worst miss that one slot.

#include <cstdint>

namespace nuvrel::platform::CrashChildReaper {

inline constexpr int capacity = 8;

// Records a child in a free slot, or in one whose process is gone. With all slots held by
// live processes the child is silently not recorded. The first call installs the handler.
// ("register" is a reserved word, hence the names.)
void registerPID(std::int32_t pid);

// Clears every slot that holds the ID.
void unregisterPID(std::int32_t pid);

}  // namespace nuvrel::platform::CrashChildReaper
