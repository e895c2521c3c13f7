// A TCP connection that may be encrypted: read, written and awaited alike in both cases.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/net/PumpedIo.h"
#include "platform/net/TlsLogin.h"

namespace quillmoor {

/// Errors of the operations are those of the socket and, when encrypted, of TlsConnection.
class NetStream {
 public:
  explicit NetStream(PumpedIo& io) : io_(io), channel_(io) {}
  ~NetStream() { close(); }
  NetStream(const NetStream&) = delete;
  NetStream& operator=(const NetStream&) = delete;

  /// The bare connection: for connecting it, and for a proxy's dialogue before TLS starts.
  TcpChannel& channel() { return channel_; }
  const TcpChannel& channel() const { return channel_; }
  bool isOpen() const { return channel_.socket.is_open(); }

  /// Encrypts from here on and sends the first message. The rest of the handshake comes with the first bytes
  /// read or written, or with `handshake`. Raises NetError.
  void startTls(TlsLogin& login);
  bool isEncrypted() const { return tls_ != nullptr; }
  /// Waits for the handshake to end. Returns the error; asio::error::timed_out at the deadline.
  asio::error_code handshake(Deadline deadline);
  /// What has gone wrong with the encryption, as part of a sentence; "" for nothing.
  std::string problem() const { return tls_ ? tls_->problem() : ""; }

  /// Reads what has arrived, at most `most` bytes; asio::error::would_block when that is nothing, and
  /// asio::error::eof at the end, which an encrypted connection must announce.
  std::size_t readSome(char* bytes, std::size_t most, asio::error_code& error);
  /// Writes what the system accepts at once. After would_block, an encrypted connection may hold bytes that
  /// must still be written: only the same bytes may follow.
  std::size_t writeSome(std::string_view bytes, asio::error_code& error);
  /// Writes all bytes. Returns the error; asio::error::timed_out at the deadline.
  asio::error_code writeAll(std::string_view bytes, Deadline deadline);

  /// As Channel's.
  void arm() {
    if (!hasPending()) channel_.arm();
  }
  bool ready() const { return channel_.ready() || hasPending(); }
  void consumeReadiness() { channel_.consumeReadiness(); }

  /// Announces the end of an encrypted connection, without waiting for the peer's.
  void close();

 private:
  bool hasPending() const { return tls_ && tls_->hasPending(); }
  asio::error_code waitFor(asio::socket_base::wait_type what, Deadline deadline);

  PumpedIo& io_;
  TcpChannel channel_;
  std::unique_ptr<TlsConnection> tls_;
};

}  // namespace quillmoor
