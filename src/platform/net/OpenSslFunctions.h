// The functions of OpenSSL 3 that TLS needs, each under the name that its manual has.
#pragma once

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace quillmoor {

// Functions only, since a macro of the headers would need the library at link time.
// clang-format off
#define QUILLMOOR_OPENSSL_FUNCTIONS(USE)                                                                    \
  USE(ASN1_STRING_get0_data) USE(ASN1_STRING_length) USE(ASN1_TIME_to_tm)                                   \
  USE(BIO_ctrl) USE(BIO_clear_flags) USE(BIO_free) USE(BIO_get_data) USE(BIO_meth_new)                      \
  USE(BIO_meth_set_ctrl) USE(BIO_meth_set_read) USE(BIO_meth_set_write) USE(BIO_new) USE(BIO_read)          \
  USE(BIO_s_mem) USE(BIO_set_data) USE(BIO_set_flags) USE(BIO_set_init)                                     \
  USE(ERR_clear_error) USE(ERR_peek_last_error) USE(ERR_reason_error_string) USE(EVP_sha256)                \
  USE(GENERAL_NAMES_free) USE(OPENSSL_init_ssl) USE(OPENSSL_sk_num) USE(OPENSSL_sk_value)                   \
  USE(SSL_CIPHER_get_name) USE(SSL_CTX_ctrl) USE(SSL_CTX_free) USE(SSL_CTX_get_cert_store)                  \
  USE(SSL_CTX_get_ex_data) USE(SSL_CTX_load_verify_file) USE(SSL_CTX_new) USE(SSL_CTX_sess_set_new_cb)      \
  USE(SSL_CTX_set_default_read_buffer_len) USE(SSL_CTX_set_default_verify_paths) USE(SSL_CTX_set_ex_data) USE(SSL_CTX_set_options)                   \
  USE(SSL_SESSION_free) USE(SSL_ctrl) USE(SSL_do_handshake) USE(SSL_free) USE(SSL_get0_param)               \
  USE(SSL_get0_peer_certificate) USE(SSL_get_SSL_CTX) USE(SSL_get_current_cipher) USE(SSL_get_error)        \
  USE(SSL_get_verify_result) USE(SSL_get_version) USE(SSL_new) USE(SSL_read_ex)            \
  USE(SSL_session_reused) USE(SSL_set1_host) USE(SSL_set_bio) USE(SSL_set_connect_state)                    \
  USE(SSL_set_session) USE(SSL_shutdown) USE(SSL_write_ex) USE(TLS_client_method)                           \
  USE(X509_NAME_print_ex) USE(X509_VERIFY_PARAM_set1_ip_asc) USE(X509_digest) USE(X509_get0_notAfter)       \
  USE(X509_get0_notBefore) USE(X509_get_ext_d2i) USE(X509_get_issuer_name) USE(X509_get_subject_name)       \
  USE(X509_verify_cert_error_string)
// clang-format on

struct OpenSslFunctions {
#define QUILLMOOR_DECLARE(name) decltype(&::name) name;
  QUILLMOOR_OPENSSL_FUNCTIONS(QUILLMOOR_DECLARE)
#undef QUILLMOOR_DECLARE
};

/// The initialised library. A system library is loaded by the first call, because most programs that start
/// never encrypt anything. Raises std::runtime_error when it cannot be loaded.
const OpenSslFunctions& OpenSsl();

/// Makes the context trust what the system trusts; the file that SSL_CERT_FILE names replaces or, on Windows,
/// joins that.
void TrustSystemRoots(SSL_CTX* context);

}  // namespace quillmoor
