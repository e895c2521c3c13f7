#include "platform/net/NetStream.h"

#include <utility>

namespace quillmoor {

void NetStream::startTls(TlsLogin& login) {
  tls_ = std::make_unique<TlsConnection>(login, channel_.socket);
  tls_->handshake();  // a failure is reported by the next operation
}

asio::error_code NetStream::waitFor(asio::socket_base::wait_type what, Deadline deadline) {
  return runToEnd(io_, channel_, deadline,
                  [&](auto handler) { channel_.socket.async_wait(what, std::move(handler)); });
}

asio::error_code NetStream::handshake(Deadline deadline) {
  for (;;) {
    // A peer that sends without end must not bypass the pump or the deadline.
    const auto now = std::chrono::steady_clock::now();
    io_.pumpIfDue(now);
    if (now >= deadline) return asio::error::timed_out;
    asio::error_code error = tls_->handshake();
    if (error != asio::error::would_block) return error;
    error = waitFor(tls_->waitsToWrite() ? asio::socket_base::wait_write : asio::socket_base::wait_read,
                    deadline);
    if (error) return error;
  }
}

std::size_t NetStream::readSome(char* bytes, std::size_t most, asio::error_code& error) {
  return tls_ ? tls_->read(bytes, most, error) : channel_.socket.read_some(asio::buffer(bytes, most), error);
}

std::size_t NetStream::writeSome(std::string_view bytes, asio::error_code& error) {
  return tls_ ? tls_->write(bytes, error) : channel_.socket.write_some(asio::buffer(bytes), error);
}

asio::error_code NetStream::writeAll(std::string_view bytes, Deadline deadline) {
  while (!bytes.empty()) {
    asio::error_code error;
    bytes.remove_prefix(writeSome(bytes, error));
    if (error == asio::error::would_block) error = waitFor(asio::socket_base::wait_write, deadline);
    if (error) return error;
  }
  return {};
}

void NetStream::close() {
  tls_.reset();
  channel_.close();
}

}  // namespace quillmoor
