// TLS 1.2 and 1.3 (RFC 5246, RFC 8446) for the connections of one login, as the client.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/net/PumpedIo.h"
#include "platform/net/TlsCertificate.h"

struct bio_st;
struct ssl_ctx_st;
struct ssl_session_st;
struct ssl_st;

namespace quillmoor {

/// What the connections of a login share: the context, the session to resume, and the certificate that the
/// first of them has shown and all others must show.
class TlsLogin {
 public:
  /// `host`: the name or address that the certificate must be for. `accepted`: see FtpClient::certificate.
  /// Raises NetError when there is no usable TLS library.
  TlsLogin(std::string host, std::string accepted);
  /// All connections must have been destroyed.
  ~TlsLogin();
  TlsLogin(const TlsLogin&) = delete;
  TlsLogin& operator=(const TlsLogin&) = delete;

  const std::string& host() const { return host_; }
  /// The fingerprint accepted beforehand; "" for none.
  const std::string& accepted() const { return accepted_; }
  /// The certificate of the first connection, once its handshake has come that far.
  const std::optional<TlsCertificate>& certificate() const { return certificate_; }
  /// Protocol and cipher of the first connection: "TLSv1.3, TLS_AES_256_GCM_SHA384".
  const std::string& cipher() const { return cipher_; }

 private:
  friend class TlsConnection;
  static int keepSession(ssl_st* connection, ssl_session_st* session);

  std::string host_, accepted_, cipher_;
  std::optional<TlsCertificate> certificate_;
  std::string groups_;  // the key exchange groups, the one that the server chose first
  ssl_ctx_st* context_ = nullptr;
  ssl_session_st* newest_ = nullptr;
};

/// Encrypts one connected, non-blocking socket. No operation waits: they report asio::error::would_block
/// until the socket is readable, or writable if `waitsToWrite`. asio::error::eof is the peer's closing
/// message and nothing else; a connection cut off is not an end. Other errors are the socket's own, `kFailed`
/// and `kWrongCertificate`; then `problem` says more.
class TlsConnection {
 public:
  static constexpr auto kFailed = asio::error::connection_aborted;
  static constexpr auto kWrongCertificate = asio::error::access_denied;

  /// Both must outlive this. Raises NetError when memory is short.
  TlsConnection(TlsLogin& login, TcpSocket& socket);
  /// Sends the closing message unless the connection has failed.
  ~TlsConnection();
  TlsConnection(const TlsConnection&) = delete;
  TlsConnection& operator=(const TlsConnection&) = delete;

  /// Continues the handshake; no error when it is complete and the certificate is as it should be.
  asio::error_code handshake();
  /// These complete the handshake first.
  std::size_t read(char* bytes, std::size_t most, asio::error_code& error);
  std::size_t write(std::string_view bytes, asio::error_code& error);

  /// Whether bytes may have arrived that no wait on the socket would show: until a read has reported
  /// would_block.
  bool hasPending() const { return established_ && !drained_; }
  bool waitsToWrite() const { return waitsToWrite_; }
  /// Part of a sentence: "wrong version number".
  const std::string& problem() const { return problem_; }

 private:
  static int readBio(bio_st* bio, char* bytes, int size);
  static int writeBio(bio_st* bio, const char* bytes, int size);
  static long controlBio(bio_st* bio, int command, long number, void* pointer);
  template <class Operation>
  asio::error_code attempt(Operation operation);
  asio::error_code checkCertificate();
  asio::error_code fail(asio::error_code error, std::string problem);

  TlsLogin& login_;
  TcpSocket& socket_;
  ssl_st* ssl_ = nullptr;
  asio::error_code socketError_;
  asio::error_code failure_;  // once set, the result of every operation
  bool established_ = false;
  bool drained_ = false;
  bool waitsToWrite_ = false;
  std::string problem_;
};

}  // namespace quillmoor
