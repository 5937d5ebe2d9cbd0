#pragma once
// The process control of this machine: posix_spawn, kill(2), and /proc for who listens on a
// port and what a process is called.

#include <memory>

#include "base/process_control.h"

namespace nuvrel::platform {

// One object for the whole process.
std::shared_ptr<base::ProcessControl> liveProcessControl();

}  // namespace nuvrel::platform
