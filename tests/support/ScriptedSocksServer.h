// A SOCKS proxy for tests, versions 4, 4a and 5: it connects to this machine whatever host it is asked for,
// and any of its answers can be replaced.
#pragma once

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillmoor::testing {

class Sockets;

class ScriptedSocksServer {
 public:
  struct Request {
    int version = 0, command = 0;
    std::string host;  // as asked for; a name or an address
    std::uint16_t port = 0;
    std::string userName, password;
  };

  /// What one connection gets in place of the right answers: bytes as they stand.
  struct Script {
    std::optional<std::string> greeting{}, login{}, reply{}, secondReply{};
    /// After a replaced answer.
    enum class Then { close, staySilent, goOn } then = Then::close;
    /// Before every byte of every answer.
    std::chrono::milliseconds pause{0};
  };

  ScriptedSocksServer();
  ~ScriptedSocksServer();

  std::uint16_t port() const { return port_; }
  /// For the connections from now on: the first `spare` ones get the right answers, those after them the
  /// script's.
  void set(Script script, int spare = 0);
  std::vector<Request> requests() const;

 private:
  class Connection;

  void serve();

  mutable std::mutex mutex_;
  Script script_;
  int spare_ = 0;
  std::vector<Request> requests_;
  std::unique_ptr<Sockets> sockets_;
  std::list<std::unique_ptr<Connection>> connections_;
  std::uint16_t port_ = 0;
};

}  // namespace quillmoor::testing
