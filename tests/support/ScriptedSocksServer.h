// A SOCKS proxy for tests, versions 4, 4a and 5: it leads to this machine whatever host it is asked for, and
// any of its answers can be replaced.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quillmoor::testing {

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
  ScriptedSocksServer(const ScriptedSocksServer&) = delete;
  ScriptedSocksServer& operator=(const ScriptedSocksServer&) = delete;

  std::uint16_t port() const { return port_; }
  /// For the connections that come from now on: the first so many as they should be, those behind by the
  /// script.
  void set(Script script, int spare = 0);
  std::vector<Request> requests() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
  mutable std::mutex mutex_;
  Script script_;
  int spare_ = 0;
  std::vector<Request> requests_;
  std::uint16_t port_ = 0;
  std::thread thread_;
};

}  // namespace quillmoor::testing
