// The data connection of a session (RFC 959 §3.2, RFC 2428): opened passively or actively, straight or
// through a SOCKS proxy, one after the other.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ftp/FtpControl.h"
#include "platform/ftp/FtpRoute.h"

namespace quillmoor {

/// Raises FtpError; dataConnectionFailed where the session goes on without this connection.
class FtpDataConnection {
 public:
  FtpDataConnection(PumpedIo& io, FtpControl& control)
      : io_(io), control_(control), data_(io), acceptor_(io), bound_(io) {}

  /// For a new session.
  void reset(bool passive, const std::optional<SocksRoute>& socks);

  /// Passive: connects to the port that the server names. Active: opens a port here or at the proxy and names
  /// it to the server, who connects once it has been sent its command: see takeIncoming.
  void open(const std::string& dataPortRange, std::chrono::milliseconds timeout);
  void close();

  /// See FtpTransfer::requestAhead.
  std::optional<std::string> requestAhead(const std::string& dataPortRange);

  bool isOpen() const { return data_.socket.is_open(); }
  /// The connection itself, when it is open.
  TcpChannel& channel() { return data_; }

  /// Active: takes the server's connection if it has come.
  void takeIncoming();
  /// Active: the address of another machine that has come and was turned away; else "".
  const std::string& stranger() const { return stranger_; }

  /// As of a Channel, for whatever is awaited: data, or the server's connection.
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
  void acceptHere();
  void acceptAtProxy();

  PumpedIo& io_;
  FtpControl& control_;
  TcpChannel data_;
  ListenChannel acceptor_;
  TcpChannel bound_;         // active through SOCKS: where the proxy will tell of the server's connection
  std::string boundAnswer_;  // what of that has come
  std::optional<SocksRoute> socks_;
  bool passive_ = true;
  bool extended_ = true;  // EPSV until the session has shown that it takes PASV only
  std::string stranger_;
  std::string listeningRequest_;  // the PORT or EPRT line that names the open port
};

}  // namespace quillmoor
