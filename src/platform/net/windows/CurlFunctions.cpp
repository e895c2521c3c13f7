#include "platform/net/CurlFunctions.h"

#include <stdexcept>

namespace quillmoor {

const CurlFunctions& Curl() {
  static const CurlFunctions functions = [] {
    const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (ready != CURLE_OK) throw std::runtime_error(curl_easy_strerror(ready));
    return CurlFunctions{curl_global_init,      curl_easy_init,
                         curl_easy_cleanup,     curl_easy_setopt,
                         curl_easy_getinfo,     curl_easy_strerror,
                         curl_multi_init,       curl_multi_cleanup,
                         curl_multi_add_handle, curl_multi_remove_handle,
                         curl_multi_perform,    curl_multi_poll,
                         curl_multi_info_read,  curl_url,
                         curl_url_cleanup,      curl_url_set};
  }();
  return functions;
}

}  // namespace quillmoor
