#include "platform/net/OpenSslFunctions.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace quillmoor {
namespace {

template <class Function>
void take(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library, name));
  if (!function) throw std::runtime_error(std::string("TLS cannot be used: libssl has no ") + name);
}

OpenSslFunctions load() {
  // Never unloaded: it has threads' data and exit handlers of its own. It brings libcrypto along.
  void* const library = ::dlopen("libssl.so.3", RTLD_NOW | RTLD_LOCAL);
  if (!library) throw std::runtime_error(std::string("TLS cannot be used: ") + ::dlerror());
  OpenSslFunctions functions{};
#define QUILLMOOR_TAKE(name) take(library, #name, functions.name);
  QUILLMOOR_OPENSSL_FUNCTIONS(QUILLMOOR_TAKE)
#undef QUILLMOOR_TAKE
  if (functions.OPENSSL_init_ssl(0, nullptr) != 1)
    throw std::runtime_error("TLS cannot be used: libssl does not start");
  return functions;
}

}  // namespace

const OpenSslFunctions& OpenSsl() {
  static const OpenSslFunctions functions = load();
  return functions;
}

void TrustSystemRoots(SSL_CTX* context) {
  OpenSsl().SSL_CTX_set_default_verify_paths(context);
}

}  // namespace quillmoor
