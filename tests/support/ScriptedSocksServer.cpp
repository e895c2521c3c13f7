#include "support/ScriptedSocksServer.h"

#include <array>
#include <asio.hpp>
#include <utility>

namespace quillmoor::testing {

using asio::awaitable;
using asio::use_awaitable;
using asio::ip::tcp;

namespace {

std::string addressBytes(const tcp::endpoint& endpoint) {
  std::string bytes;
  if (endpoint.address().is_v4()) {
    for (const auto b : endpoint.address().to_v4().to_bytes()) bytes += static_cast<char>(b);
  } else {
    for (const auto b : endpoint.address().to_v6().to_bytes()) bytes += static_cast<char>(b);
  }
  return bytes;
}

std::string reply(int version, int code, const tcp::endpoint& endpoint) {
  const std::string port = {static_cast<char>(endpoint.port() >> 8),
                            static_cast<char>(endpoint.port() & 0xFF)};
  if (version == 4) {
    return std::string{'\0', static_cast<char>(code == 0 ? 0x5A : 0x5B)} + port + addressBytes(endpoint);
  }
  return std::string{'\x05', static_cast<char>(code), '\0', endpoint.address().is_v4() ? '\x01' : '\x04'} +
         addressBytes(endpoint) + port;
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

  awaitable<std::uint8_t> readByte(tcp::socket& client) {
    const std::string byte = co_await read(client, 1);
    co_return static_cast<std::uint8_t>(byte[0]);
  }

  awaitable<std::string> readToZero(tcp::socket& client) {
    std::string text;
    for (;;) {
      const std::uint8_t byte = co_await readByte(client);
      if (byte == 0) co_return text;
      text += static_cast<char>(byte);
    }
  }

  awaitable<std::string> readCounted(tcp::socket& client) {
    const std::uint8_t size = co_await readByte(client);
    const std::string text = co_await read(client, size);
    co_return text;
  }

  awaitable<std::uint16_t> readPort(tcp::socket& client) {
    const std::uint8_t high = co_await readByte(client);
    const std::uint8_t low = co_await readByte(client);
    co_return static_cast<std::uint16_t>(high << 8 | low);
  }

  awaitable<std::string> readAddress4(tcp::socket& client) {
    asio::ip::address_v4::bytes_type raw;
    for (auto& byte : raw) byte = co_await readByte(client);
    co_return asio::ip::address_v4(raw).to_string();
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

  awaitable<Request> takeRequest(tcp::socket& client, const Script& script) {
    Request request;
    request.version = co_await readByte(client);
    if (request.version == 4) {
      request.command = co_await readByte(client);
      request.port = co_await readPort(client);
      request.host = co_await readAddress4(client);
      request.userName = co_await readToZero(client);
      if (request.host.starts_with("0.0.0.")) request.host = co_await readToZero(client);
      co_return request;
    }
    request.methods = co_await readCounted(client);
    const bool login = request.methods.find('\x02') != std::string::npos;
    co_await answer(client, pair(5, login ? 2 : 0), script.greeting, script);
    if (login) {
      co_await readByte(client);
      request.userName = co_await readCounted(client);
      request.password = co_await readCounted(client);
      co_await answer(client, pair(1, 0), script.login, script);
    }
    co_await readByte(client);
    request.command = co_await readByte(client);
    co_await readByte(client);
    const std::uint8_t type = co_await readByte(client);
    if (type == 1) {
      request.host = co_await readAddress4(client);
    } else if (type == 3) {
      request.host = co_await readCounted(client);
    } else {
      asio::ip::address_v6::bytes_type raw;
      for (auto& byte : raw) byte = co_await readByte(client);
      request.host = asio::ip::address_v6(raw).to_string();
    }
    request.port = co_await readPort(client);
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
