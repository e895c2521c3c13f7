// A transfer over a data connection (RFC 959 §3.3, §3.4); one at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/ftp/FtpDataConnection.h"

namespace quillmoor {

/// Receives files and listings. Belongs to one session: `reset` begins the next.
class FtpTransfer {
 public:
  FtpTransfer(PumpedIo& io, FtpControl& control) : io_(io), control_(control), data_(io, control) {}

  /// Receives the data of a transfer. `data[-1]` may be written to. May raise; the transfer is then ended
  /// cleanly and the exception passed on.
  using Sink = std::function<void(char* data, std::size_t size)>;
  /// Bytes received so far and the size that the server announced (0: none); called several times a second.
  using Progress = std::function<void(std::int64_t count, std::int64_t size)>;

  struct Order {
    std::string command;  // "RETR name", "LIST"
    std::chrono::milliseconds timeout;
    std::string dataPortRange;  // as FtpClient::dataPortRange
    /// Whether the server's sizes count the bytes to receive, which they do not in ASCII transfers. If so,
    /// they replace its confirmation when the control connection is lost after the last byte.
    bool exactSize = false;
    std::optional<std::int64_t> listedSize;
    Sink sink;
    Progress progress;
    /// Called when all data has arrived, before the reply; may send commands ahead.
    std::function<void()> onDataEnd;
  };
  struct Outcome {
    FtpReply reply;  // final; a refusal too
    std::int64_t count = 0;
    std::optional<std::int64_t> announced;  // the size in a preliminary reply
  };

  void reset(bool passive, const std::optional<SocksRoute>& socks = std::nullopt) {
    data_.reset(passive, socks);
  }

  /// Opens the data connection, sends the command and receives the data. Afterwards the control connection is
  /// either usable or closed; the exception says what went wrong.
  Outcome run(const Order& order);

  /// The command line that requests the next data connection, to be sent ahead. In active mode, opens the
  /// port that it names. Nullopt where that needs a dialogue with a proxy.
  std::optional<std::string> requestAhead(const std::string& dataPortRange) {
    return data_.requestAhead(dataPortRange);
  }

 private:
  struct Reception;

  Outcome receive(const Order& order);
  void requireProtectedData(const Order& order, const Reception& state);
  bool takeReplies(Reception& state);
  bool readData(const Order& order, Reception& state);
  void wait(const Order& order, Reception& state);
  void endInOrder(std::chrono::milliseconds timeout);

  static constexpr std::size_t kBufferSize = 256 * 1024;

  PumpedIo& io_;
  FtpControl& control_;
  FtpDataConnection data_;
  std::unique_ptr<char[]> buffer_;
};

}  // namespace quillmoor
