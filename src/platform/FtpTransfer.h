// Data connections (RFC 959 §3.2, §3.3; RFC 2428) and the one transfer at a time that runs over them.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/FtpControl.h"
#include "platform/FtpRoute.h"

namespace quillmoor {

/// Receives files and listings. Belongs to one session: `reset` begins the next.
class FtpTransfer {
 public:
  FtpTransfer(PumpedIo& io, FtpControl& control)
      : io_(io), control_(control), data_(io), acceptor_(io), bound_(io) {}

  /// What a transfer does with what arrives. `data[-1]` may be written to. May raise; the transfer is then
  /// ended in order and the exception passed on.
  using Sink = std::function<void(char* data, std::size_t size)>;
  /// Bytes received so far and the size the server mentioned (0: none); several times a second.
  using Progress = std::function<void(std::int64_t count, std::int64_t size)>;

  struct Order {
    std::string command;  // "RETR name", "LIST"
    std::chrono::milliseconds timeout;
    std::string dataPortRange;  // as FtpClient::dataPortRange
    /// A mentioned size is the number of bytes to come, so fewer are a failure. Not so in ASCII transfers.
    bool exactSize = false;
    Sink sink;
    Progress progress;
  };
  struct Outcome {
    FtpReply reply;  // final; a refusal too
    std::int64_t count = 0;
  };

  void reset(bool passive, std::optional<SocksRoute> socks = std::nullopt);

  /// Opens the data connection, sends the command and receives. Afterwards the control connection is either
  /// in order or closed; the exception tells what went wrong.
  Outcome run(const Order& order);

  /// The command line that will ask for the next data connection: what to send ahead. Active: opens the
  /// port it names. Nothing where that takes a conversation with a proxy.
  std::optional<std::string> requestAhead(const std::string& dataPortRange);

 private:
  struct Reception;

  void open(const Order& order);
  bool openPassive(const Order& order, bool extended);
  void connectData(std::uint16_t port, std::chrono::milliseconds timeout);
  void connectToProxy(TcpChannel& channel, Deadline deadline);
  bool overIPv6() const;
  std::string listenForServer(const std::string& dataPortRange);
  std::string listenAtProxy(std::chrono::milliseconds timeout);
  void closeData();
  Outcome receive(const Order& order);
  bool takeReplies(Reception& state);
  void tryAccept();
  void tryTakeFromProxy();
  bool readData(const Order& order, Reception& state);
  void wait(const Order& order, Reception& state);
  void endInOrder(std::chrono::milliseconds timeout);

  static constexpr std::size_t kBufferSize = 256 * 1024;

  PumpedIo& io_;
  FtpControl& control_;
  TcpChannel data_;
  ListenChannel acceptor_;
  TcpChannel bound_;         // active through SOCKS: where the proxy will tell of the server's connection
  std::string boundAnswer_;  // what of that has come
  std::optional<SocksRoute> socks_;
  bool passive_ = true;
  bool extended_ = true;          // EPSV until the session has shown that it takes PASV only
  std::string listeningRequest_;  // the PORT or EPRT line that names the open acceptor
  std::unique_ptr<char[]> buffer_;
};

}  // namespace quillmoor
