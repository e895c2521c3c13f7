// The functions of libcurl that a web request is made with.
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

/// Ready for use. Where the library is one of the system's it is loaded with the first call: most backups
/// call no address, and it brings two dozen others along, which would lie in memory for as long as the
/// program waits for its hour. Raises std::runtime_error when it cannot be had.
const CurlFunctions& Curl();

}  // namespace quillmoor
