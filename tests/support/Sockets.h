// Socket operations for the threads of the scripted servers. Each blocks until it is done, or until another
// thread ends the server: from then on every operation fails.
#pragma once

#include <asio.hpp>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace quillmoor::testing {

class Sockets {
 public:
  /// False when the operation failed. `start` begins it, with the handler that it receives.
  template <class Socket, class Start>
  bool wait(Socket& socket, Start start) {
    bool done = false, succeeded = false;
    start([&](const asio::error_code& error, auto...) {
      done = true;
      succeeded = !error;
    });
    for (context.restart(); !done; context.run_one())
      if (ended_) close(socket);
    return succeeded;
  }

  /// Runs `serve` on a thread, which accepts the connections to a free port at the address; returns the port.
  std::uint16_t start(const asio::ip::address& address, std::function<void()> serve) {
    const std::uint16_t port = listen(listener, address);
    run(std::move(serve));
    return port;
  }
  void run(std::function<void()> serve) { thread_ = std::thread(std::move(serve)); }
  /// Must be called before the destruction of anything that the thread uses.
  void stop() {
    asio::post(context, [this] { ended_ = true; });
    if (thread_.joinable()) thread_.join();
  }

  /// Listens on a free port, which it returns.
  std::uint16_t listen(asio::ip::tcp::acceptor& acceptor, const asio::ip::address& address) {
    acceptor = asio::ip::tcp::acceptor(context, {address, 0});
    return acceptor.local_endpoint().port();
  }
  /// Small replies go out at once: each would wait 40 ms for the acknowledgement of the one before it.
  bool accept(asio::ip::tcp::acceptor& acceptor, asio::ip::tcp::socket& socket) {
    if (!wait(acceptor, [&](auto then) { acceptor.async_accept(socket, then); })) return false;
    asio::error_code ignored;
    socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    return true;
  }
  bool connect(asio::ip::tcp::socket& socket, const asio::ip::tcp::endpoint& endpoint) {
    return wait(socket, [&](auto then) { socket.async_connect(endpoint, then); });
  }
  /// A stream is a socket or an encrypted one.
  template <class Stream>
  bool send(Stream& stream, std::string_view bytes) {
    return wait(stream.lowest_layer(),
                [&](auto then) { asio::async_write(stream, asio::buffer(bytes), then); });
  }
  /// Appends `size` bytes or more.
  template <class Stream>
  bool receive(Stream& stream, std::string& bytes, std::size_t size = 1) {
    return wait(stream.lowest_layer(), [&](auto then) {
      asio::async_read(stream, asio::dynamic_buffer(bytes), asio::transfer_at_least(size), then);
    });
  }
  /// Until the peer sends something or closes the connection.
  bool waitForPeer(asio::ip::tcp::socket& socket) {
    return wait(socket, [&](auto then) { socket.async_wait(asio::ip::tcp::socket::wait_read, then); });
  }
  template <class Socket>
  static void close(Socket& socket) {
    asio::error_code ignored;
    socket.close(ignored);
  }

  bool ended() const { return ended_; }

  asio::io_context context;
  asio::ip::tcp::acceptor listener{context};

 private:
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace quillmoor::testing
