// The data connection of a session (RFC 959 §3.2, RFC 2428), passive or active, direct or through a SOCKS
// proxy; one at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ftp/FtpControl.h"
#include "platform/ftp/FtpRoute.h"

namespace quillmoor {

/// Raises FtpError; after dataConnectionFailed the session is still usable.
class FtpDataConnection {
 public:
  FtpDataConnection(PumpedIo& io, FtpControl& control)
      : io_(io), control_(control), data_(io), acceptor_(io), bound_(io) {}

  /// Prepares for a new session.
  void reset(bool passive, const std::optional<SocksRoute>& socks);

  /// Passive: connects to the port that the server names. Active: opens a port, local or at the proxy, and
  /// announces it to the server, which connects after it has received its command: see acceptIncoming.
  void open(const std::string& dataPortRange, std::chrono::milliseconds timeout);
  void close();

  /// See FtpTransfer::requestAhead.
  std::optional<std::string> requestAhead(const std::string& dataPortRange);

  bool isOpen() const { return data_.isOpen(); }
  /// The connection itself, when it is open.
  NetStream& stream() { return data_; }

  /// Encrypts an open connection if the control connection is: to be called once the server knows the command
  /// that the connection is for.
  void encrypt();

  /// Active: accepts the server's connection if it has arrived.
  void acceptIncoming();
  /// Active: the address of another machine whose connection was rejected; else "".
  const std::string& unexpectedPeer() const { return unexpectedPeer_; }

  /// As Channel's, for whatever is awaited: data, or the server's connection.
  void arm();
  bool ready() const { return data_.ready() || acceptor_.ready() || bound_.ready(); }

 private:
  bool openPassive(bool extended, std::chrono::milliseconds timeout);
  void connectToServer(std::uint16_t port, std::chrono::milliseconds timeout);
  /// Raises NetError.
  void connectToProxy(TcpChannel& channel, Deadline deadline);
  bool overIPv6() const;
  std::string listenForServer(const std::string& dataPortRange);
  std::string listenAtProxy(std::chrono::milliseconds timeout);
  bool acceptHere();
  bool acceptAtProxy();

  PumpedIo& io_;
  FtpControl& control_;
  NetStream data_;
  ListenChannel acceptor_;
  TcpChannel bound_;         // active through SOCKS: the proxy reports the server's connection here
  std::string boundAnswer_;  // the part of that report received so far
  std::optional<SocksRoute> socks_;
  bool passive_ = true;
  bool extended_ = true;  // EPSV until the server has turned out to support PASV only
  std::string unexpectedPeer_;
  std::string listeningRequest_;  // the PORT or EPRT line for the open port
};

}  // namespace quillmoor
