#pragma once
// `nuvrel install-server`: builds llama-server with the project's script when no server can
// be found, recording the download in the network activity log. Blocks for the whole build
// (minutes, the first time only); Ctrl-C or SIGTERM stops the build and everything it started.

#include <ostream>

#include "app/network_activity_log.h"

namespace nuvrel::app {

// Prints the server's path on `out` and returns 0; 1 when none could be had, 130 when stopped.
// Progress and the build's own output go to standard error.
int runInstallServerCommand(NetworkActivityLog& log, std::ostream& out, std::ostream& err);

}  // namespace nuvrel::app
