#include "base/curl_library.h"

#include <stdexcept>

namespace nuvrel::base::detail {

CurlLibrary::CurlLibrary() : library("libcurl.so.4") {
    library.resolve(globalInit, "curl_global_init");
    library.resolve(easyInit, "curl_easy_init");
    library.resolve(easyCleanup, "curl_easy_cleanup");
    library.resolve(easyReset, "curl_easy_reset");
    library.resolve(easySetOption, "curl_easy_setopt");
    library.resolve(easyErrorText, "curl_easy_strerror");
    library.resolve(multiInit, "curl_multi_init");
    library.resolve(multiCleanup, "curl_multi_cleanup");
    library.resolve(multiAdd, "curl_multi_add_handle");
    library.resolve(multiRemove, "curl_multi_remove_handle");
    library.resolve(multiPerform, "curl_multi_perform");
    library.resolve(multiPoll, "curl_multi_poll");
    library.resolve(multiWakeup, "curl_multi_wakeup");
    library.resolve(multiInfoRead, "curl_multi_info_read");
    library.resolve(multiErrorText, "curl_multi_strerror");
    library.resolve(slistAppend, "curl_slist_append");
    library.resolve(slistFreeAll, "curl_slist_free_all");
    library.resolve(urlNew, "curl_url");
    library.resolve(urlCleanup, "curl_url_cleanup");
    library.resolve(urlGet, "curl_url_get");
    library.resolve(urlSet, "curl_url_set");
    library.resolve(free, "curl_free");
    // Never paired with curl_global_cleanup: transfers may still run on detached threads at
    // exit, and the process releases everything anyway.
    if (globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
        throw std::runtime_error("libcurl could not be initialised");
    }
}

const CurlLibrary& curl() {
    return openedOnce<CurlLibrary>();
}

}  // namespace nuvrel::base::detail
