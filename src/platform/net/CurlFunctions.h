// The functions of libcurl that web requests use.
#pragma once

#include <curl/curl.h>

namespace quillmoor {

struct CurlFunctions {
  decltype(&curl_global_init) globalInit;
  decltype(&curl_easy_init) easyInit;
  decltype(&curl_easy_cleanup) easyCleanup;
  decltype(&curl_easy_setopt) setOption;
  decltype(&curl_easy_getinfo) getInfo;
  decltype(&curl_easy_strerror) errorText;
  decltype(&curl_multi_init) multiInit;
  decltype(&curl_multi_cleanup) multiCleanup;
  decltype(&curl_multi_add_handle) addHandle;
  decltype(&curl_multi_remove_handle) removeHandle;
  decltype(&curl_multi_perform) perform;
  decltype(&curl_multi_poll) poll;
  decltype(&curl_multi_info_read) readInfo;
  decltype(&curl_url) makeUrl;
  decltype(&curl_url_cleanup) cleanUpUrl;
  decltype(&curl_url_set) setUrl;
};

/// The initialised library. A system library is loaded by the first call: most backups make no web request,
/// and it brings two dozen others along, which would stay in memory while the program waits for its hour.
/// Raises std::runtime_error when it cannot be loaded.
const CurlFunctions& Curl();

}  // namespace quillmoor
