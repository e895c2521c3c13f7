#include "platform/net/CurlFunctions.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace quillmoor {
namespace {

/// Builds of libcurl with different TLS libraries.
constexpr const char* kLibraries[] = {"libcurl.so.4", "libcurl-gnutls.so.4"};

/// Never unloaded: that would need everything it has started to be stopped first.
void* open() {
  std::string why;
  for (const char* const name : kLibraries) {
    if (void* const library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL)) return library;
    if (why.empty()) why = ::dlerror();
  }
  throw std::runtime_error("Web addresses cannot be called: " + why);
}

template <class Function>
void take(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library, name));
  if (!function)
    throw std::runtime_error(std::string("Web addresses cannot be called: libcurl has no ") + name);
}

CurlFunctions load() {
  void* const library = open();
  CurlFunctions functions{};
  take(library, "curl_global_init", functions.globalInit);
  take(library, "curl_easy_init", functions.easyInit);
  take(library, "curl_easy_cleanup", functions.easyCleanup);
  take(library, "curl_easy_setopt", functions.setOption);
  take(library, "curl_easy_getinfo", functions.getInfo);
  take(library, "curl_easy_strerror", functions.errorText);
  take(library, "curl_multi_init", functions.multiInit);
  take(library, "curl_multi_cleanup", functions.multiCleanup);
  take(library, "curl_multi_add_handle", functions.addHandle);
  take(library, "curl_multi_remove_handle", functions.removeHandle);
  take(library, "curl_multi_perform", functions.perform);
  take(library, "curl_multi_poll", functions.poll);
  take(library, "curl_multi_info_read", functions.readInfo);
  take(library, "curl_url", functions.makeUrl);
  take(library, "curl_url_cleanup", functions.cleanUpUrl);
  take(library, "curl_url_set", functions.setUrl);
  const CURLcode ready = functions.globalInit(CURL_GLOBAL_DEFAULT);
  if (ready != CURLE_OK) throw std::runtime_error(functions.errorText(ready));
  return functions;
}

}  // namespace

const CurlFunctions& Curl() {
  static const CurlFunctions functions = load();
  return functions;
}

}  // namespace quillmoor
