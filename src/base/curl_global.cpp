#include "base/curl_global.h"

#include <curl/curl.h>

#include <mutex>
#include <stdexcept>

namespace nuvrel::base::detail {

void ensureCurlGlobalInit() {
    static std::once_flag once;
    // Never paired with curl_global_cleanup: transfers may still run on detached threads at
    // exit, and the process releases everything anyway.
    std::call_once(once, [] {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            throw std::runtime_error("libcurl could not be initialised");
        }
    });
}

}  // namespace nuvrel::base::detail
