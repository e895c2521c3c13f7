#include "support/ScriptedHttpServer.h"

#include <asio.hpp>
#include <utility>

namespace quillmoor::testing {

using asio::ip::tcp;

class ScriptedHttpServer::Impl {
 public:
  asio::io_context context;
  tcp::acceptor acceptor{context, {asio::ip::address_v4::loopback(), 0}};

  void accept(ScriptedHttpServer& server);
};

/// One client; kept alive by whatever is under way.
class ScriptedHttpServer::Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(ScriptedHttpServer& server, tcp::socket socket) : server_(server), socket_(std::move(socket)) {}

  void readHead() {
    asio::async_read_until(socket_, asio::dynamic_buffer(request_), "\r\n\r\n",
                           [self = shared_from_this()](const asio::error_code& error, std::size_t size) {
                             if (!error) self->readBody(size);
                           });
  }

 private:
  void readBody(std::size_t headSize) {
    constexpr std::string_view kLength = "Content-Length: ";
    const auto at = request_.find(kLength);
    const std::size_t length = at < headSize ? std::stoul(request_.substr(at + kLength.size())) : 0;
    const std::size_t have = request_.size() - headSize;
    asio::async_read(socket_, asio::dynamic_buffer(request_),
                     asio::transfer_exactly(length > have ? length - have : 0),
                     [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                       if (error) return;
                       self->answer_ = self->server_.take(self->request_);
                       self->send(self->answer_.bytes);
                     });
  }

  void send(const std::string& bytes) {
    asio::async_write(socket_, asio::buffer(bytes),
                      [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                        if (error || self->answer_.then == Then::close) return;
                        if (self->answer_.then == Then::repeat) return self->send(self->answer_.more);
                        self->waitForClient();
                      });
  }

  void waitForClient() {
    socket_.async_wait(tcp::socket::wait_read, [self = shared_from_this()](const asio::error_code&) {});
  }

  ScriptedHttpServer& server_;
  tcp::socket socket_;
  std::string request_;
  Answer answer_;
};

void ScriptedHttpServer::Impl::accept(ScriptedHttpServer& server) {
  acceptor.async_accept([this, &server](const asio::error_code& error, tcp::socket socket) {
    if (error) return;
    std::make_shared<Connection>(server, std::move(socket))->readHead();
    accept(server);
  });
}

ScriptedHttpServer::ScriptedHttpServer() : impl_(std::make_unique<Impl>()) {
  port_ = impl_->acceptor.local_endpoint().port();
  impl_->accept(*this);
  thread_ = std::thread([this] { impl_->context.run(); });
}

ScriptedHttpServer::~ScriptedHttpServer() {
  impl_->context.stop();
  thread_.join();
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
  if (found != answers_.end()) return found->second;
  return {httpAnswer("500 Nothing is scripted for that"), Then::close, ""};
}

std::string httpAnswer(const std::string& status, const std::string& body, const std::string& headers) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers +
         "\r\n" + body;
}

}  // namespace quillmoor::testing
