#include "support/ScriptedSocksServer.h"

#include <array>
#include <asio.hpp>
#include <utility>

namespace quillmoor::testing {

using asio::awaitable;
using asio::use_awaitable;
using asio::ip::tcp;

namespace {

std::string bytesOf(const auto& raw) {
  return {raw.begin(), raw.end()};
}

/// An address of 4 or 16 bytes.
std::string hostOf(const std::string& bytes) {
  if (bytes.size() == 4) {
    asio::ip::address_v4::bytes_type raw;
    std::copy(bytes.begin(), bytes.end(), raw.begin());
    return asio::ip::address_v4(raw).to_string();
  }
  asio::ip::address_v6::bytes_type raw;
  std::copy(bytes.begin(), bytes.end(), raw.begin());
  return asio::ip::address_v6(raw).to_string();
}

std::uint16_t portOf(const std::string& bytes) {
  return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[0]) << 8 |
                                    static_cast<unsigned char>(bytes[1]));
}

std::string reply(int version, int code, const tcp::endpoint& endpoint) {
  const std::string port = {static_cast<char>(endpoint.port() >> 8),
                            static_cast<char>(endpoint.port() & 0xFF)};
  const asio::ip::address address = endpoint.address();
  const std::string host =
      address.is_v4() ? bytesOf(address.to_v4().to_bytes()) : bytesOf(address.to_v6().to_bytes());
  if (version == 4) return std::string{'\0', code == 0 ? '\x5A' : '\x5B'} + port + host;
  return std::string{'\x05', static_cast<char>(code), '\0', address.is_v4() ? '\x01' : '\x04'} + host + port;
}

std::string pair(int first, int second) {
  return {static_cast<char>(first), static_cast<char>(second)};
}

awaitable<void> copy(std::shared_ptr<tcp::socket> from, std::shared_ptr<tcp::socket> to) {
  std::array<char, 65536> bytes;
  asio::error_code ignored;
  try {
    for (;;) {
      const std::size_t size = co_await from->async_read_some(asio::buffer(bytes), use_awaitable);
      co_await asio::async_write(*to, asio::buffer(bytes.data(), size), use_awaitable);
    }
  } catch (const std::system_error&) {
    to->shutdown(tcp::socket::shutdown_send, ignored);
  }
}

}  // namespace

class ScriptedSocksServer::Impl {
 public:
  explicit Impl(ScriptedSocksServer& owner) : owner_(owner) {}

  asio::io_context context;
  tcp::acceptor acceptor{context, {asio::ip::address_v4::loopback(), 0}};

  awaitable<void> acceptAll() {
    for (;;) {
      auto client = std::make_shared<tcp::socket>(co_await acceptor.async_accept(use_awaitable));
      // Answers go out byte by byte: held back until the one before is acknowledged, each would cost 40 ms.
      client->set_option(tcp::no_delay(true));
      asio::co_spawn(context, serve(std::move(client)), asio::detached);
    }
  }

 private:
  /// Ends a connection in order.
  struct Over {};

  awaitable<void> serve(std::shared_ptr<tcp::socket> client) {
    Script script;
    {
      const std::lock_guard lock(owner_.mutex_);
      if (owner_.spare_ > 0) {
        --owner_.spare_;
      } else {
        script = owner_.script_;
      }
    }
    try {
      const Request request = co_await takeRequest(*client, script);
      {
        const std::lock_guard lock(owner_.mutex_);
        owner_.requests_.push_back(request);
      }
      co_await fulfil(client, request, script);
    } catch (const std::system_error&) {
    } catch (const Over&) {
    }
  }

  awaitable<std::string> read(tcp::socket& client, std::size_t size) {
    std::string bytes(size, '\0');
    co_await asio::async_read(client, asio::buffer(bytes), use_awaitable);
    co_return bytes;
  }

  awaitable<std::string> readToZero(tcp::socket& client) {
    std::string text;
    for (;;) {
      const std::string byte = co_await read(client, 1);
      if (byte[0] == '\0') co_return text;
      text += byte;
    }
  }

  awaitable<std::string> readCounted(tcp::socket& client) {
    const std::string size = co_await read(client, 1);
    const std::string text = co_await read(client, static_cast<unsigned char>(size[0]));
    co_return text;
  }

  awaitable<void> write(tcp::socket& client, const std::string& bytes, const Script& script) {
    asio::steady_timer timer(context);
    for (const char byte : bytes) {
      if (script.pause.count() > 0) {
        timer.expires_after(script.pause);
        co_await timer.async_wait(use_awaitable);
      }
      co_await asio::async_write(client, asio::buffer(&byte, 1), use_awaitable);
    }
  }

  /// Gives the right answer or the one in its place.
  awaitable<void> answer(tcp::socket& client, const std::string& right,
                         const std::optional<std::string>& instead, const Script& script) {
    co_await write(client, instead.value_or(right), script);
    if (!instead || script.then == Script::Then::goOn) co_return;
    // What a client may have sent ahead is no reason for a reset that overtakes the answer.
    asio::error_code ignored;
    if (script.then == Script::Then::close) client.shutdown(tcp::socket::shutdown_send, ignored);
    char byte;
    for (;;) co_await client.async_read_some(asio::buffer(&byte, 1), use_awaitable);
  }

  /// A request that breaks the protocol ends the connection.
  static void require(bool holds) {
    if (!holds) throw Over{};
  }

  awaitable<Request> takeRequest(tcp::socket& client, const Script& script) {
    Request request;
    const std::string head = co_await read(client, 2);
    request.version = head[0];
    if (request.version == 4) {
      request.command = head[1];
      const std::string target = co_await read(client, 6);
      request.port = portOf(target);
      request.host = hostOf(target.substr(2));
      request.userName = co_await readToZero(client);
      if (request.host == "0.0.0.1") request.host = co_await readToZero(client);
      co_return request;
    }
    const std::string methods = co_await read(client, static_cast<std::size_t>(head[1]));
    const bool login = methods.ends_with('\x02');
    require(request.version == 5 && methods[0] == '\0');
    co_await answer(client, pair(5, login ? 2 : 0), script.greeting, script);
    if (login) {
      const std::string version = co_await read(client, 1);
      require(version == "\x01");
      request.userName = co_await readCounted(client);
      request.password = co_await readCounted(client);
      co_await answer(client, pair(1, 0), script.login, script);
    }
    const std::string order = co_await read(client, 4);
    require(order[0] == 5 && order[2] == 0);
    request.command = order[1];
    if (order[3] == 3) {
      request.host = co_await readCounted(client);
    } else {
      const std::string address = co_await read(client, order[3] == 1 ? 4 : 16);
      request.host = hostOf(address);
    }
    const std::string port = co_await read(client, 2);
    request.port = portOf(port);
    co_return request;
  }

  awaitable<void> fulfil(std::shared_ptr<tcp::socket> client, const Request& request, const Script& script) {
    auto server = std::make_shared<tcp::socket>(context);
    const tcp::endpoint here(request.host == "::1" ? asio::ip::address(asio::ip::address_v6::loopback())
                                                   : asio::ip::address_v4::loopback(),
                             request.command == 1 ? request.port : std::uint16_t{0});
    if (request.command == 1) {
      bool refused = false;
      try {
        co_await server->async_connect(here, use_awaitable);
      } catch (const std::system_error&) {
        refused = true;
      }
      co_await answer(*client, reply(request.version, refused ? 5 : 0, here), script.reply, script);
      if (refused) throw Over{};
    } else {
      tcp::acceptor waiting(context, here);
      co_await answer(*client, reply(request.version, 0, waiting.local_endpoint()), script.reply, script);
      *server = co_await waiting.async_accept(use_awaitable);
      co_await answer(*client, reply(request.version, 0, server->remote_endpoint()), script.secondReply,
                      script);
    }
    server->set_option(tcp::no_delay(true));
    asio::co_spawn(context, copy(server, client), asio::detached);
    co_await copy(client, server);
  }

  ScriptedSocksServer& owner_;
};

ScriptedSocksServer::ScriptedSocksServer() : impl_(std::make_unique<Impl>(*this)) {
  port_ = impl_->acceptor.local_endpoint().port();
  asio::co_spawn(impl_->context, impl_->acceptAll(), asio::detached);
  thread_ = std::thread([this] { impl_->context.run(); });
}

ScriptedSocksServer::~ScriptedSocksServer() {
  impl_->context.stop();
  thread_.join();
}

void ScriptedSocksServer::set(Script script, int spare) {
  const std::lock_guard lock(mutex_);
  script_ = std::move(script);
  spare_ = spare;
}

std::vector<ScriptedSocksServer::Request> ScriptedSocksServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

}  // namespace quillmoor::testing
