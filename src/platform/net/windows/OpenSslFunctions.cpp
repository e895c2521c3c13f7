#include <windows.h>
// Needs windows.h, and has to come before the library's headers: it defines some of their names as macros.
#include <wincrypt.h>
#undef OCSP_REQUEST
#undef OCSP_RESPONSE
#undef PKCS7_SIGNER_INFO
#undef X509_CERT_PAIR
#undef X509_EXTENSIONS
#undef X509_NAME

#include <cstdlib>
#include <stdexcept>

#include "platform/net/OpenSslFunctions.h"

namespace quillmoor {

const OpenSslFunctions& OpenSsl() {
  static const OpenSslFunctions functions = [] {
    // The library's configuration file would be looked for in a folder that any user may create.
    if (OPENSSL_init_ssl(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) != 1)
      throw std::runtime_error("TLS cannot be used: the library does not start");
    OpenSslFunctions all{};
#define QUILLMOOR_TAKE(name) all.name = &::name;
    QUILLMOOR_OPENSSL_FUNCTIONS(QUILLMOOR_TAKE)
#undef QUILLMOOR_TAKE
    return all;
  }();
  return functions;
}

void TrustSystemRoots(SSL_CTX* context) {
  X509_STORE* const trusted = SSL_CTX_get_cert_store(context);
  const HCERTSTORE system = ::CertOpenSystemStoreW(0, L"ROOT");
  const CERT_CONTEXT* root = nullptr;
  while (system && (root = ::CertEnumCertificatesInStore(system, root)) != nullptr) {
    const unsigned char* bytes = root->pbCertEncoded;
    if (X509* const certificate = d2i_X509(nullptr, &bytes, static_cast<long>(root->cbCertEncoded))) {
      X509_STORE_add_cert(trusted, certificate);
      X509_free(certificate);
    }
  }
  if (system) ::CertCloseStore(system, 0);
  if (const char* const file = std::getenv("SSL_CERT_FILE")) SSL_CTX_load_verify_file(context, file);
  ERR_clear_error();
}

}  // namespace quillmoor
