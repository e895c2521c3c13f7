#include "support/ScriptedHttpServer.h"

#include <asio.hpp>
#include <utility>

namespace quillmoor::testing {

using asio::awaitable;
using asio::use_awaitable;
using asio::ip::tcp;

class ScriptedHttpServer::Impl {
 public:
  explicit Impl(ScriptedHttpServer& owner) : owner_(owner) {}

  asio::io_context context;
  tcp::acceptor acceptor{context, {asio::ip::address_v4::loopback(), 0}};

  awaitable<void> acceptAll() {
    for (;;) {
      tcp::socket client = co_await acceptor.async_accept(use_awaitable);
      asio::co_spawn(context, serve(std::move(client)), asio::detached);
    }
  }

 private:
  awaitable<void> serve(tcp::socket client) {
    constexpr std::string_view kLength = "Content-Length: ";
    try {
      std::string request;
      auto buffer = asio::dynamic_buffer(request);
      const std::size_t head = co_await asio::async_read_until(client, buffer, "\r\n\r\n", use_awaitable);
      const auto at = request.find(kLength);
      const std::size_t whole = head + (at < head ? std::stoul(request.substr(at + kLength.size())) : 0);
      const std::size_t missing = whole > request.size() ? whole - request.size() : 0;
      co_await asio::async_read(client, buffer, asio::transfer_exactly(missing), use_awaitable);
      const Answer answer = owner_.take(request);
      co_await asio::async_write(client, asio::buffer(answer.bytes), use_awaitable);
      while (answer.then == Then::repeat)
        co_await asio::async_write(client, asio::buffer(answer.more), use_awaitable);
      if (answer.then == Then::silence) co_await client.async_wait(tcp::socket::wait_read, use_awaitable);
    } catch (const std::system_error&) {
    }
  }

  ScriptedHttpServer& owner_;
};

ScriptedHttpServer::ScriptedHttpServer() : impl_(std::make_unique<Impl>(*this)) {
  port_ = impl_->acceptor.local_endpoint().port();
  asio::co_spawn(impl_->context, impl_->acceptAll(), asio::detached);
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
