#pragma once
// libcurl, opened on the first request or URL rather than at start: with its TLS and
// authentication libraries it is most of what the loader would otherwise map and relocate for
// every sentence. Types and constants come from curl's headers.

#include <curl/curl.h>

#include "base/shared_library.h"

namespace nuvrel::base::detail {

// The functions of libcurl that base calls. Named apart from curl's own names, which curl's
// headers may define as type-checking macros.
struct CurlLibrary {
    // Opens libcurl and resolves every member. Throws SharedLibraryError.
    CurlLibrary();

    SharedLibrary library;
    decltype(&::curl_global_init) globalInit = nullptr;
    decltype(&::curl_easy_init) easyInit = nullptr;
    decltype(&::curl_easy_cleanup) easyCleanup = nullptr;
    decltype(&::curl_easy_reset) easyReset = nullptr;
    decltype(&::curl_easy_setopt) easySetOption = nullptr;
    decltype(&::curl_easy_strerror) easyErrorText = nullptr;
    decltype(&::curl_multi_init) multiInit = nullptr;
    decltype(&::curl_multi_cleanup) multiCleanup = nullptr;
    decltype(&::curl_multi_add_handle) multiAdd = nullptr;
    decltype(&::curl_multi_remove_handle) multiRemove = nullptr;
    decltype(&::curl_multi_perform) multiPerform = nullptr;
    decltype(&::curl_multi_poll) multiPoll = nullptr;
    decltype(&::curl_multi_wakeup) multiWakeup = nullptr;
    decltype(&::curl_multi_info_read) multiInfoRead = nullptr;
    decltype(&::curl_multi_strerror) multiErrorText = nullptr;
    decltype(&::curl_slist_append) slistAppend = nullptr;
    decltype(&::curl_slist_free_all) slistFreeAll = nullptr;
    decltype(&::curl_url) urlNew = nullptr;
    decltype(&::curl_url_cleanup) urlCleanup = nullptr;
    decltype(&::curl_url_get) urlGet = nullptr;
    decltype(&::curl_url_set) urlSet = nullptr;
    decltype(&::curl_free) free = nullptr;
};

// libcurl, opened and globally initialised once per process; thread-safe. Throws
// SharedLibraryError when it cannot be opened (a later call tries again).
const CurlLibrary& curl();

}  // namespace nuvrel::base::detail
