#pragma once
// libcurl's process-wide set-up. Every entry point into curl in base calls this first.

namespace nuvrel::base::detail {

// Runs curl_global_init once per process; later calls return at once. Thread-safe.
void ensureCurlGlobalInit();

}  // namespace nuvrel::base::detail
