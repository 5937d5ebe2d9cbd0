#pragma once
// Runs a long job (a build, a download) on a task that Ctrl-C or SIGTERM cancels, so that the
// job is stopped rather than killed half-way. Blocks the two signals on the calling thread:
// call it from the main thread before other threads start, so that all of them inherit that.

#include <functional>

namespace nuvrel::app {

// Returns when `body` ends; rethrows what it threw, base::Cancelled after a signal.
void runUntilInterrupted(const std::function<void()>& body);

}  // namespace nuvrel::app
