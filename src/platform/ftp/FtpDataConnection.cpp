#include "platform/ftp/FtpDataConnection.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/system/ErrorText.h"

namespace quillmoor {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

asio::ip::address plainAddress(const asio::ip::address& address) {
  if (!address.is_v6() || !address.to_v6().is_v4_mapped()) return address;
  return asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6());
}

/// Ports of a range text; {0, 0} for any.
std::pair<std::uint16_t, std::uint16_t> parsePortRange(const std::string& text) {
  if (text == "0" || text == "0:0") return {0, 0};
  std::uint16_t low = 0;
  std::uint16_t high = 0;
  const char* const end = text.data() + text.size();
  const auto [colon, lowError] = std::from_chars(text.data(), end, low);
  if (lowError == std::errc() && colon != end && *colon == ':') {
    const auto [rest, highError] = std::from_chars(colon + 1, end, high);
    if (highError == std::errc() && rest == end && low != 0 && low <= high) return {low, high};
  }
  throw FtpError(FtpErrorNumber::badArgument, "\"" + text + "\" is not a port range.");
}

/// RFC 959 §4.1.2 (PORT), RFC 2428 §2 (EPRT).
std::string portCommand(const asio::ip::address& address, std::uint16_t port) {
  if (address.is_v6()) return "EPRT |2|" + address.to_string() + "|" + std::to_string(port) + "|";
  std::string numbers = address.to_string();
  std::replace(numbers.begin(), numbers.end(), '.', ',');
  return "PORT " + numbers + "," + std::to_string(port / 256) + "," + std::to_string(port % 256);
}

}  // namespace

void FtpDataConnection::reset(bool passive, const std::optional<SocksRoute>& socks) {
  close();
  passive_ = passive;
  socks_ = socks;
  extended_ = true;
}

void FtpDataConnection::close() {
  data_.close();
  acceptor_.close();
  bound_.close();
  boundAnswer_.clear();
  listeningRequest_.clear();
  unexpectedPeer_.clear();
}

std::optional<std::string> FtpDataConnection::requestAhead(const std::string& dataPortRange) {
  if (passive_) return extended_ ? "EPSV" : "PASV";
  if (socks_) return std::nullopt;
  if (listeningRequest_.empty()) listeningRequest_ = listenForServer(dataPortRange);
  return listeningRequest_;
}

/// Opens a local port; returns the command that announces it.
std::string FtpDataConnection::listenForServer(const std::string& dataPortRange) {
  const auto [low, high] = parsePortRange(dataPortRange);
  const asio::ip::address address = plainAddress(control_.localAddress());
  asio::error_code error;
  for (std::uint32_t port = low; port <= high; ++port) {
    acceptor_.close();
    const asio::ip::tcp::endpoint endpoint(address, static_cast<std::uint16_t>(port));
    acceptor_.socket.open(endpoint.protocol(), error);
    if (!error && port != 0) acceptor_.socket.set_option(asio::socket_base::reuse_address(true), error);
    if (!error) acceptor_.socket.bind(endpoint, error);
    if (!error) acceptor_.socket.listen(1, error);
    if (!error) acceptor_.socket.non_blocking(true, error);
    if (!error) break;
  }
  if (error) {
    acceptor_.close();
    throw FtpError(FtpErrorNumber::dataConnectionFailed, "Cannot listen for a data connection (ports " +
                                                             dataPortRange + "): " + ErrorText(error) + ".");
  }
  return portCommand(address, acceptor_.socket.local_endpoint().port());
}

void FtpDataConnection::connectToProxy(TcpChannel& channel, Deadline deadline) {
  const auto error = connectTo(io_, channel, control_.remoteEndpoint(), deadline);
  if (error) {
    throw NetError(NetFailure::connectFailed, "cannot connect to the proxy: " + ErrorText(error));
  }
}

/// Lets the proxy open a port (SOCKS BIND); returns the command that announces it.
std::string FtpDataConnection::listenAtProxy(milliseconds timeout) {
  const Deadline deadline = steady_clock::now() + timeout;
  try {
    connectToProxy(bound_, deadline);
    const SocksAddress at = socksBind(io_, bound_, socks_->login, socks_->server, deadline);
    return portCommand(plainAddress(asio::ip::make_address(at.host)), at.port);
  } catch (const NetError& error) {
    const bool refused = error.failure() == NetFailure::refused;
    throw FtpError(
        FtpErrorNumber::dataConnectionFailed,
        std::string(refused ? "The proxy accepts no incoming data connection (passive mode needs none): "
                            : "Cannot receive a data connection through the proxy: ") +
            error.what() + ".");
  }
}

/// Connects to a port of the server.
void FtpDataConnection::connectToServer(std::uint16_t port, milliseconds timeout) {
  const Deadline deadline = steady_clock::now() + timeout;
  std::string why;
  if (!socks_) {
    const auto error = connectTo(io_, data_.channel(), {control_.remoteEndpoint().address(), port}, deadline);
    if (!error) return;
    why = ErrorText(error);
  } else {
    try {
      connectToProxy(data_.channel(), deadline);
      return socksConnect(io_, data_.channel(), socks_->login, {socks_->server.host, port}, deadline);
    } catch (const NetError& error) {
      data_.close();
      why = error.what();
    }
  }
  throw FtpError(FtpErrorNumber::dataConnectionFailed,
                 "Cannot open the data connection to port " + std::to_string(port) + ": " + why + ".");
}

/// Whether the server is known to be reached over IPv6. A name may mean either to a SOCKS proxy.
bool FtpDataConnection::overIPv6() const {
  if (!socks_) return plainAddress(control_.remoteEndpoint().address()).is_v6();
  asio::error_code isName;
  const auto address = asio::ip::make_address(socks_->server.host, isName);
  return !isName && address.is_v6();
}

bool FtpDataConnection::openPassive(bool extended, milliseconds timeout) {
  const FtpReply reply = control_.exchange(extended ? "EPSV" : "PASV", timeout);
  if (reply.refusal()) {
    if (extended) return false;
    control_.raiseRefused("PASV", reply);
  }
  const auto port = extended ? epsvPort(reply.text) : pasvPort(reply.text);
  if (!port) {
    if (extended) return false;
    throw FtpError(FtpErrorNumber::badReply,
                   "The server's reply names no data port: " + printableReply(reply.text, ""));
  }
  // Always connects to the control connection's host, whatever the reply says: a server must not send its
  // clients to other machines, and one behind address translation names an unreachable address.
  try {
    connectToServer(*port, timeout);
  } catch (const FtpError&) {
    if (extended && !overIPv6()) return false;
    throw;
  }
  return true;
}

void FtpDataConnection::open(const std::string& dataPortRange, milliseconds timeout) {
  if (!passive_) {
    if (listeningRequest_.empty()) {
      listeningRequest_ = socks_ ? listenAtProxy(timeout) : listenForServer(dataPortRange);
    }
    const std::string line = listeningRequest_;
    const FtpReply reply = control_.exchange(line, timeout);
    if (reply.refusal()) control_.raiseRefused(line, reply);
    return;
  }
  if (extended_ && openPassive(true, timeout)) return;
  // PASV is for IPv4 only (RFC 2428 §1).
  if (overIPv6()) {
    throw FtpError(FtpErrorNumber::dataConnectionFailed,
                   "The server offers no extended passive mode over IPv6.");
  }
  openPassive(false, timeout);
  extended_ = false;
}

void FtpDataConnection::arm() {
  data_.arm();
  acceptor_.arm();
  bound_.arm();
}

void FtpDataConnection::acceptIncoming() {
  bool accepted = !isOpen() && acceptor_.socket.is_open() && acceptHere();
  accepted |= bound_.ready() && acceptAtProxy();
  if (accepted) encrypt();
}

void FtpDataConnection::encrypt() {
  if (!isOpen() || !control_.tls()) return;
  try {
    data_.startTls(*control_.tls());
  } catch (const NetError& error) {
    throw FtpError(FtpErrorNumber::tlsFailed, std::string(error.what()) + ".");
  }
}

/// Active mode: accepts the server's connection. One from any other machine is closed at once.
bool FtpDataConnection::acceptHere() {
  acceptor_.consumeReadiness();
  asio::error_code error;
  asio::ip::tcp::endpoint peer;
  TcpSocket accepted(io_.context().get_executor());
  acceptor_.socket.accept(accepted, peer, error);
  if (error) return false;
  if (plainAddress(peer.address()) != plainAddress(control_.remoteEndpoint().address())) {
    unexpectedPeer_ = plainAddress(peer.address()).to_string();
    return false;
  }
  TcpSocket& socket = data_.channel().socket;
  socket = std::move(accepted);
  socket.non_blocking(true, error);
  acceptor_.close();
  return true;
}

/// Active mode through SOCKS: takes the connection once the proxy has reported its peer. Only when the
/// channel is ready: its socket must not move while it is being watched.
bool FtpDataConnection::acceptAtProxy() {
  std::string why;
  try {
    const auto peer = pollSocksPeer(bound_, socks_->login.version, boundAnswer_);
    if (!peer) return false;
    asio::error_code peerIsName, serverIsName;
    const auto address = asio::ip::make_address(peer->host, peerIsName);
    const auto server = asio::ip::make_address(socks_->server.host, serverIsName);
    if (peerIsName || serverIsName || address.is_unspecified() ||
        plainAddress(address) == plainAddress(server)) {
      data_.channel().socket = std::move(bound_.socket);
      return true;
    }
    why = "the proxy accepted a connection from a machine other than the server";
  } catch (const NetError& error) {
    why = error.what();
  }
  bound_.close();
  throw FtpError(FtpErrorNumber::dataConnectionFailed,
                 "The server's data connection was not established: " + why + ".");
}

}  // namespace quillmoor
