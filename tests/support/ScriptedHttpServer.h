// An HTTP server for tests: what it sends for each path is defined beforehand, byte by byte.
//
//   ScriptedHttpServer server;
//   server.answer("/gone", "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
//
// It runs on a thread of its own and serves one connection after the other, one request on each.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quillmoor::testing {

class ScriptedHttpServer {
 public:
  /// What follows the bytes of an answer: the end of the connection, silence until the client closes it, or
  /// the `more` bytes again and again.
  enum class Then { close, silence, repeat };

  ScriptedHttpServer();
  ~ScriptedHttpServer();

  std::uint16_t port() const { return port_; }
  /// "http://127.0.0.1:port" and the path.
  std::string address(const std::string& path) const;
  /// Answers requests for the path; any other gets status 500.
  void answer(const std::string& path, std::string bytes, Then then = Then::close, std::string more = "");
  /// Every request received so far, head and body.
  std::vector<std::string> requests() const;

 private:
  struct Answer {
    std::string bytes;
    Then then = Then::close;
    std::string more;
  };
  struct Connection;

  void serve();
  Answer take(const std::string& request);

  mutable std::mutex mutex_;
  std::map<std::string, Answer> answers_;
  std::vector<std::string> requests_;
  std::unique_ptr<Connection> connection_;
  std::uint16_t port_ = 0;
};

/// A status line, headers and a body that go together.
std::string httpAnswer(const std::string& status, const std::string& body = "",
                       const std::string& headers = "");

}  // namespace quillmoor::testing
