#include "support/ScriptedSocksServer.h"

#include <array>
#include <utility>

#include "support/Sockets.h"

namespace quillmoor::testing {

using asio::ip::tcp;

namespace {

std::string bytesOf(const auto& raw) {
  return {raw.begin(), raw.end()};
}

/// An address of 4 or 16 bytes.
std::string hostOf(const std::string& bytes) {
  const auto text = [&]<class Address>(Address) {
    typename Address::bytes_type raw;
    std::copy(bytes.begin(), bytes.end(), raw.begin());
    return Address(raw).to_string();
  };
  return bytes.size() == 4 ? text(asio::ip::address_v4()) : text(asio::ip::address_v6());
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

}  // namespace

/// One client, the server that it is connected to, and the thread that serves both.
class ScriptedSocksServer::Connection : public Sockets {
 public:
  explicit Connection(ScriptedSocksServer& proxy) : proxy_(proxy) {}
  ~Connection() { stop(); }
  void begin(const Script& script) {
    script_ = script;
    run([this] {
      try {
        serve();
      } catch (const Over&) {
      }
      close(client);
      close(server_);
    });
  }

  tcp::socket client{context};

 private:
  /// Ends the connection.
  struct Over {};
  static void require(bool holds) {
    if (!holds) throw Over{};
  }

  std::string read(std::size_t size) {
    std::string bytes(size, '\0');
    require(wait(client, [&](auto then) { asio::async_read(client, asio::buffer(bytes), then); }));
    return bytes;
  }
  std::string readToZero() {
    std::string text;
    for (std::string byte; (byte = read(1)) != std::string(1, '\0');) text += byte;
    return text;
  }
  std::string readCounted() { return read(static_cast<unsigned char>(read(1)[0])); }

  /// Sends the right answer or the one that replaces it.
  void answer(const std::string& right, const std::optional<std::string>& instead) {
    for (const char byte : instead.value_or(right)) {
      std::this_thread::sleep_for(script_.pause);
      require(send(client, {&byte, 1}));
    }
    if (!instead || script_.then == Script::Then::goOn) return;
    // A close before the client has sent everything would be a reset, which overtakes the answer.
    asio::error_code ignored;
    if (script_.then == Script::Then::close) client.shutdown(tcp::socket::shutdown_send, ignored);
    for (;;) read(1);
  }

  Request takeRequest() {
    Request request;
    const std::string head = read(2);
    request.version = head[0];
    if (request.version == 4) {
      request.command = head[1];
      request.port = portOf(read(2));
      request.host = hostOf(read(4));
      request.userName = readToZero();
      if (request.host == "0.0.0.1") request.host = readToZero();
      return request;
    }
    const std::string methods = read(static_cast<std::size_t>(head[1]));
    const bool login = methods.ends_with('\x02');
    require(request.version == 5 && methods[0] == '\0');
    answer({'\5', login ? '\2' : '\0'}, script_.greeting);
    if (login) {
      require(read(1) == "\1");
      request.userName = readCounted();
      request.password = readCounted();
      answer({'\1', '\0'}, script_.login);
    }
    const std::string order = read(4);
    require(order[0] == 5 && order[2] == 0);
    request.command = order[1];
    request.host = order[3] == 3 ? readCounted() : hostOf(read(order[3] == 1 ? 4 : 16));
    request.port = portOf(read(2));
    return request;
  }

  void serve() {
    const Request request = takeRequest();
    {
      const std::lock_guard lock(proxy_.mutex_);
      proxy_.requests_.push_back(request);
    }
    const auto here = request.host == "::1" ? asio::ip::address(asio::ip::address_v6::loopback())
                                            : asio::ip::address_v4::loopback();
    if (request.command == 1) {
      const tcp::endpoint target(here, request.port);
      const bool connected = connect(server_, target);
      answer(reply(request.version, connected ? 0 : 5, target), script_.reply);
      require(connected);
    } else {
      tcp::acceptor waiting(context);
      listen(waiting, here);
      answer(reply(request.version, 0, waiting.local_endpoint()), script_.reply);
      require(accept(waiting, server_));
      answer(reply(request.version, 0, server_.remote_endpoint()), script_.secondReply);
    }
    copy(client, server_, fromClient_);
    copy(server_, client, fromServer_);
    for (context.restart(); open_ > 0; context.run_one()) {
      if (!ended()) continue;
      close(client);
      close(server_);
    }
  }

  /// Passes on what arrives until the sender closes its side.
  void copy(tcp::socket& from, tcp::socket& to, std::array<char, 65536>& bytes) {
    from.async_read_some(asio::buffer(bytes), [&](const asio::error_code& error, std::size_t size) {
      if (error) return endCopy(to);
      asio::async_write(to, asio::buffer(bytes, size), [&](const asio::error_code& failed, std::size_t) {
        failed ? endCopy(to) : copy(from, to, bytes);
      });
    });
  }
  void endCopy(tcp::socket& to) {
    asio::error_code ignored;
    to.shutdown(tcp::socket::shutdown_send, ignored);
    --open_;
  }

  ScriptedSocksServer& proxy_;
  Script script_;
  tcp::socket server_{context};
  std::array<char, 65536> fromClient_, fromServer_;
  int open_ = 2;  // directions
};

ScriptedSocksServer::ScriptedSocksServer() : sockets_(std::make_unique<Sockets>()) {
  port_ = sockets_->start(asio::ip::address_v4::loopback(), [this] { serve(); });
}

ScriptedSocksServer::~ScriptedSocksServer() {
  sockets_->stop();
  connections_.clear();
}

void ScriptedSocksServer::serve() {
  for (;;) {
    auto connection = std::make_unique<Connection>(*this);
    if (!sockets_->accept(sockets_->listener, connection->client)) return;
    const std::lock_guard lock(mutex_);
    connection->begin(spare_ > 0 ? Script{} : script_);
    if (spare_ > 0) --spare_;
    connections_.push_back(std::move(connection));
  }
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
