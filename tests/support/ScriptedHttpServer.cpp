#include "support/ScriptedHttpServer.h"

#include "support/Sockets.h"

namespace quillmoor::testing {

struct ScriptedHttpServer::Connection : Sockets {
  asio::ip::tcp::socket client{context};

  /// A whole request, or nothing when the client does not send one.
  std::string request() {
    constexpr std::string_view kLength = "Content-Length: ";
    std::string text;
    std::size_t head;
    while ((head = text.find("\r\n\r\n")) == std::string::npos)
      if (!receive(client, text)) return "";
    const auto at = text.find(kLength);
    const std::size_t whole = head + 4 + (at < head ? std::stoul(text.substr(at + kLength.size())) : 0);
    return text.size() >= whole || receive(client, text, whole - text.size()) ? text : "";
  }
};

ScriptedHttpServer::ScriptedHttpServer() : connection_(std::make_unique<Connection>()) {
  port_ = connection_->start(asio::ip::address_v4::loopback(), [this] { serve(); });
}

ScriptedHttpServer::~ScriptedHttpServer() {
  connection_->stop();
}

void ScriptedHttpServer::serve() {
  Connection& connection = *connection_;
  while (connection.accept(connection.listener, connection.client)) {
    if (const std::string request = connection.request(); !request.empty()) {
      const Answer answer = take(request);
      bool open = connection.send(connection.client, answer.bytes);
      while (open && answer.then == Then::repeat) open = connection.send(connection.client, answer.more);
      if (open && answer.then == Then::silence) connection.waitForPeer(connection.client);
    }
    Sockets::close(connection.client);
  }
}

std::string ScriptedHttpServer::address(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void ScriptedHttpServer::answer(const std::string& path, std::string bytes, Then then, std::string more) {
  const std::lock_guard lock(mutex_);
  answers_[path] = {std::move(bytes), then, std::move(more)};
}

std::vector<std::string> ScriptedHttpServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

ScriptedHttpServer::Answer ScriptedHttpServer::take(const std::string& request) {
  const std::lock_guard lock(mutex_);
  requests_.push_back(request);
  const auto path = request.find(' ') + 1;
  const auto found = answers_.find(request.substr(path, request.find(' ', path) - path));
  return found != answers_.end() ? found->second : Answer{httpAnswer("500 Not scripted"), Then::close, ""};
}

std::string httpAnswer(const std::string& status, const std::string& body, const std::string& headers) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers +
         "\r\n" + body;
}

}  // namespace quillmoor::testing
