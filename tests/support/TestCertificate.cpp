#include "support/TestCertificate.h"

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/x509.h>

#include <stdexcept>

namespace quillmoor::testing {
namespace {

/// Windows finds its source of entropy by the registry, which a test may have replaced later.
[[maybe_unused]] const bool kSeeded = RAND_status() == 1;

}  // namespace

TestCertificate::TestCertificate(bool version13) {
  SSL_CTX* const ssl = context.native_handle();
  const int version = version13 ? TLS1_3_VERSION : TLS1_2_VERSION;
  SSL_CTX_set_min_proto_version(ssl, version);
  SSL_CTX_set_max_proto_version(ssl, version);
  SSL_CTX_set_session_id_context(ssl, reinterpret_cast<const unsigned char*>("tests"), 5);

  EVP_PKEY* const key = EVP_EC_gen("P-256");
  X509* const made = X509_new();
  ASN1_INTEGER_set(X509_get_serialNumber(made), 1);
  X509_gmtime_adj(X509_getm_notBefore(made), -3600);
  X509_gmtime_adj(X509_getm_notAfter(made), 24 * 3600);
  X509_set_pubkey(made, key);
  X509_NAME* const name = X509_get_subject_name(made);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"),
                             -1, -1, 0);
  X509_set_issuer_name(made, name);
  const bool works = X509_sign(made, key, EVP_sha256()) > 0 && SSL_CTX_use_certificate(ssl, made) == 1 &&
                     SSL_CTX_use_PrivateKey(ssl, key) == 1;
  unsigned char digest[32];
  X509_digest(made, EVP_sha256(), digest, nullptr);
  for (const unsigned char byte : digest) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    fingerprint += digits;
  }
  X509_free(made);
  EVP_PKEY_free(key);
  if (!works) throw std::runtime_error("no certificate for the test server");
}

}  // namespace quillmoor::testing
