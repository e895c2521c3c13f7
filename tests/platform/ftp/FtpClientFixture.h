// What the tests of the FTP client share: a client whose events are recorded, and a server to talk to.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/ftp/FtpClient.h"
#include "support/ScriptedFtpServer.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {

using Clock = std::chrono::steady_clock;
using Session = testing::ScriptedFtpServer::Session;

using enum FtpErrorNumber;

inline constexpr std::int32_t kShortMs = 300;  // for what is to time out
// For what is to time out after exchanges that must not, on a machine that is busy with other tests.
inline constexpr std::int32_t kEnoughMs = 1000;

inline int number(FtpErrorNumber n) {
  return static_cast<int>(n);
}

class FtpClientTest : public ::testing::Test {
 protected:
  FtpClientTest() {
    client.timeoutMs = 10'000;
    client.onError = [this](int, const std::string& text) { errors.push_back(text); };
    client.onState = [this](FtpState state) { states.push_back(static_cast<int>(state)); };
    client.onProgress = [this](const FtpProgress& event) { events.push_back(event); };
  }

  void login() { client.login("127.0.0.1", "joe", "hunter22", "", server.port()); }

  /// The error an operation raises; its number is 0 when it raises none.
  FtpError errorOf(const std::function<void()>& operation) {
    try {
      operation();
    } catch (const FtpError& error) {
      return error;
    }
    return {0, ""};
  }

  int numberOf(const std::function<void()>& operation) { return errorOf(operation).number(); }

  /// The contents of a remote file that is fetched as "f".
  std::string fetched(const std::string& path = "/f", std::optional<std::int64_t> listedSize = {}) {
    client.getFile(path, (folder / "f").string(), listedSize);
    return testing::contentsOf(folder / "f");
  }

  std::string shownTexts() const {
    std::string all;
    for (const auto& event : events) all += event.text;
    for (const auto& error : errors) all += error;
    return all;
  }

  /// All that a server has received: "USER joe, PASS x".
  static std::string received(const testing::ScriptedFtpServer& by) {
    std::string all;
    for (const auto& line : by.commands()) all += (all.empty() ? "" : ", ") + line;
    return all;
  }

  testing::ScriptedFtpServer server;
  FtpClient client;
  testing::TemporaryFolder folder;
  std::vector<std::string> errors;
  std::vector<int> states;
  std::vector<FtpProgress> events;
};

}  // namespace quillmoor
