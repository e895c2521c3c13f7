// A TLS server's identity for tests: a new key with a self-signed certificate for "localhost".
#pragma once

#include <asio.hpp>
#include <asio/ssl.hpp>
#include <string>

namespace quillmoor::testing {

struct TestCertificate {
  /// The server takes TLS 1.3, or else 1.2, and nothing else.
  explicit TestCertificate(bool version13);

  asio::ssl::context context{asio::ssl::context::tls_server};
  std::string fingerprint;  // SHA-256, lower-case hexadecimal digits
};

}  // namespace quillmoor::testing
