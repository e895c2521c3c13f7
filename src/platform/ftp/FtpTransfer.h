// The one transfer at a time that runs over a data connection (RFC 959 §3.3, §3.4).
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

  /// What a transfer does with what arrives. `data[-1]` may be written to. May raise; the transfer is then
  /// ended in order and the exception passed on.
  using Sink = std::function<void(char* data, std::size_t size)>;
  /// Bytes received so far and the size the server mentioned (0: none); several times a second.
  using Progress = std::function<void(std::int64_t count, std::int64_t size)>;

  struct Order {
    std::string command;  // "RETR name", "LIST"
    std::chrono::milliseconds timeout;
    std::string dataPortRange;  // as FtpClient::dataPortRange
    /// Where the sizes of the server are numbers of bytes to come, which they are not in ASCII transfers,
    /// they stand in for its confirmation when the control connection is lost behind the last byte.
    bool exactSize = false;
    std::optional<std::int64_t> listedSize;
    Sink sink;
    Progress progress;
  };
  struct Outcome {
    FtpReply reply;  // final; a refusal too
    std::int64_t count = 0;
    std::optional<std::int64_t> announced;  // the size that a preliminary reply mentioned
  };

  void reset(bool passive, const std::optional<SocksRoute>& socks = std::nullopt) {
    data_.reset(passive, socks);
  }

  /// Opens the data connection, sends the command and receives. Afterwards the control connection is either
  /// in order or closed; the exception tells what went wrong.
  Outcome run(const Order& order);

  /// The command line that will ask for the next data connection: what to send ahead. Active: opens the
  /// port it names. Nothing where that takes a conversation with a proxy.
  std::optional<std::string> requestAhead(const std::string& dataPortRange) {
    return data_.requestAhead(dataPortRange);
  }

 private:
  struct Reception;

  Outcome receive(const Order& order);
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
