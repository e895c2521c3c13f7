#include "platform/FtpTransfer.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <utility>

#include "platform/ErrorText.h"

namespace quillmoor {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How long the farewell to a transfer that was broken off may take before the connection is given up.
constexpr milliseconds kFarewell{2000};
constexpr milliseconds kProgressInterval{100};

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
  throw FtpError(FtpErrorNumber::badArgument, "\"" + text + "\" is no range of ports.");
}

/// RFC 959 §4.1.2 (PORT), RFC 2428 §2 (EPRT).
std::string portCommand(const asio::ip::address& address, std::uint16_t port) {
  if (address.is_v6()) return "EPRT |2|" + address.to_string() + "|" + std::to_string(port) + "|";
  std::string numbers = address.to_string();
  std::replace(numbers.begin(), numbers.end(), '.', ',');
  return "PORT " + numbers + "," + std::to_string(port / 256) + "," + std::to_string(port % 256);
}

FtpError refused(const std::string& command, const FtpReply& reply) {
  return FtpError(reply.code, "The server refused " + command.substr(0, command.find(' ')) + ": " +
                                  printableReply(reply.text, ""));
}

}  // namespace

namespace {

/// Carries what the sink raised past the handling of what the connections raise.
struct SinkFailure {
  std::exception_ptr cause;
};

}  // namespace

/// What is known of a transfer under way.
struct FtpTransfer::Reception {
  std::optional<FtpReply> finalReply;
  std::int64_t announced = 0;
  bool sizeAnnounced = false;
  bool controlLost = false;
  bool dataEnded = false;
  bool dataBroken = false;
  std::int64_t count = 0;
  std::size_t preliminaries = 0;
  steady_clock::time_point lastEvent = steady_clock::now();
  steady_clock::time_point lastProgress = lastEvent;
  steady_clock::time_point windowStart =
      lastEvent;  // of the time in which at least a byte a second must come
  std::int64_t windowCount = 0;

  bool over() const {
    return (finalReply && finalReply->refusal()) || (dataEnded && (finalReply || controlLost));
  }
};

void FtpTransfer::reset(bool passive, std::optional<SocksRoute> socks) {
  closeData();
  passive_ = passive;
  socks_ = std::move(socks);
  extended_ = true;
}

void FtpTransfer::closeData() {
  data_.close();
  acceptor_.close();
  bound_.close();
  boundAnswer_.clear();
  listeningRequest_.clear();
}

std::optional<std::string> FtpTransfer::requestAhead(const std::string& dataPortRange) {
  if (passive_) return extended_ ? "EPSV" : "PASV";
  if (socks_) return std::nullopt;
  if (listeningRequest_.empty()) listeningRequest_ = listenForServer(dataPortRange);
  return listeningRequest_;
}

/// Opens a port here; returns the command that names it.
std::string FtpTransfer::listenForServer(const std::string& dataPortRange) {
  const auto [low, high] = parsePortRange(dataPortRange);
  const asio::ip::address address = plainAddress(control_.localAddress());
  asio::error_code error;
  for (std::uint32_t port = low; port <= high; ++port) {
    acceptor_.close();
    const asio::ip::tcp::endpoint endpoint(address, static_cast<std::uint16_t>(port));
    acceptor_.socket.open(endpoint.protocol(), error);
    if (!error) acceptor_.socket.set_option(asio::socket_base::reuse_address(true), error);
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

void FtpTransfer::connectToProxy(TcpChannel& channel, Deadline deadline) {
  const auto error = connectTo(io_, channel, control_.remoteEndpoint(), deadline);
  if (error) {
    throw FtpError(FtpErrorNumber::connectFailed, "cannot connect to the proxy: " + ErrorText(error));
  }
}

/// Has the proxy open a port (SOCKS BIND); returns the command that names it.
std::string FtpTransfer::listenAtProxy(milliseconds timeout) {
  const Deadline deadline = steady_clock::now() + timeout;
  try {
    connectToProxy(bound_, deadline);
    const SocksAddress at = socksBind(io_, bound_, socks_->login, socks_->server, deadline);
    return portCommand(plainAddress(asio::ip::make_address(at.host)), at.port);
  } catch (const FtpError& error) {
    throw FtpError(FtpErrorNumber::dataConnectionFailed,
                   std::string("The proxy lets no data connection come in (passive mode needs none): ") +
                       error.what() + ".");
  }
}

/// Connects to a port of the server.
void FtpTransfer::connectData(std::uint16_t port, milliseconds timeout) {
  const Deadline deadline = steady_clock::now() + timeout;
  std::string why;
  if (!socks_) {
    const auto error = connectTo(io_, data_, {control_.remoteEndpoint().address(), port}, deadline);
    if (!error) return;
    why = ErrorText(error);
  } else {
    try {
      connectToProxy(data_, deadline);
      return socksConnect(io_, data_, socks_->login, {socks_->server.host, port}, deadline);
    } catch (const FtpError& error) {
      data_.close();
      why = error.what();
    }
  }
  throw FtpError(FtpErrorNumber::dataConnectionFailed,
                 "Cannot open the data connection to port " + std::to_string(port) + ": " + why + ".");
}

/// Whether the server is known to be reached over IPv6. What a name means to a proxy is not.
bool FtpTransfer::overIPv6() const {
  if (!socks_) return plainAddress(control_.remoteEndpoint().address()).is_v6();
  asio::error_code isName;
  const auto address = asio::ip::make_address(socks_->server.host, isName);
  return !isName && address.is_v6();
}

bool FtpTransfer::openPassive(const Order& order, bool extended) {
  const FtpReply reply = control_.exchange(extended ? "EPSV" : "PASV", order.timeout);
  if (reply.refusal()) {
    if (extended) return false;
    throw refused("PASV", reply);
  }
  const auto port = extended ? epsvPort(reply.text) : pasvPort(reply.text);
  if (!port) {
    if (extended) return false;
    throw FtpError(FtpErrorNumber::badReply,
                   "The server's answer names no data port: " + printableReply(reply.text, ""));
  }
  // The host is the control connection's, whatever the reply says: a server has no business to send its
  // clients to other machines, and one behind address translation names an address that leads nowhere.
  try {
    connectData(*port, order.timeout);
  } catch (const FtpError&) {
    if (extended) return false;
    throw;
  }
  return true;
}

void FtpTransfer::open(const Order& order) {
  if (!passive_) {
    if (listeningRequest_.empty()) {
      listeningRequest_ = socks_ ? listenAtProxy(order.timeout) : listenForServer(order.dataPortRange);
    }
    const std::string line = listeningRequest_;
    const FtpReply reply = control_.exchange(line, order.timeout);
    if (reply.refusal()) throw refused(line, reply);
    return;
  }
  if (extended_ && openPassive(order, true)) return;
  // PASV speaks of IPv4 only (RFC 2428 §1).
  if (overIPv6()) {
    throw FtpError(FtpErrorNumber::dataConnectionFailed,
                   "The server offers no extended passive mode over IPv6.");
  }
  openPassive(order, false);
  extended_ = false;
}

FtpTransfer::Outcome FtpTransfer::run(const Order& order) {
  struct CloseData {
    FtpTransfer& transfer;
    ~CloseData() { transfer.closeData(); }
  } const closing{*this};

  bool sent = false;
  try {
    FtpControl::checkLine(order.command);
    open(order);
    control_.send(order.command, order.timeout);
    sent = true;
    return receive(order);
  } catch (const FtpError& error) {
    switch (static_cast<FtpErrorNumber>(error.number())) {
      case FtpErrorNumber::dataConnectionFailed:
        if (sent) endInOrder(order.timeout);
        break;
      case FtpErrorNumber::badArgument:
      case FtpErrorNumber::incomplete:
        break;
      case FtpErrorNumber::timedOut:
      case FtpErrorNumber::aborted:
        sent ? endInOrder(order.timeout) : control_.close();
        break;
      default:
        if (error.number() == 421 || error.number() >= static_cast<int>(FtpErrorNumber::notConnected)) {
          control_.close();
        }
    }
    throw;
  } catch (const Aborted&) {
    sent ? endInOrder(order.timeout) : control_.close();
    throw;
  } catch (const SinkFailure& failure) {
    // Nothing is wrong with the session, but the server is still sending.
    endInOrder(order.timeout);
    std::rethrow_exception(failure.cause);
  }
}

FtpTransfer::Outcome FtpTransfer::receive(const Order& order) {
  Reception state;
  if (!buffer_) buffer_ = std::make_unique<char[]>(kBufferSize + 1);
  wait(order, state);
  while (!state.over()) {
    bool moved = takeReplies(state);
    if (!data_.socket.is_open() && acceptor_.socket.is_open()) tryAccept();
    if (bound_.ready()) tryTakeFromProxy();
    if (data_.socket.is_open() && !state.dataEnded && !state.over()) moved |= readData(order, state);
    if (!moved && !state.over()) wait(order, state);
  }

  const bool allThere =
      order.exactSize && !state.dataBroken && state.sizeAnnounced && state.count == state.announced;
  if (!state.finalReply) {
    // A long transfer may outlive the control connection; the size says whether the file does not miss a
    // byte.
    control_.close();
    if (!allThere) {
      throw FtpError(FtpErrorNumber::connectionLost,
                     "The connection was lost before the server had confirmed the transfer.");
    }
    return {{226, "226 Connection lost after the last byte."}, state.count};
  }
  if (state.finalReply->code == 421) {
    throw FtpError(421, "The server closed the session: " + printableReply(state.finalReply->text, ""));
  }
  if (state.finalReply->completion() && state.dataBroken) {
    throw FtpError(FtpErrorNumber::incomplete, "The data connection broke before the end.");
  }
  if (state.finalReply->completion() && order.exactSize && state.sizeAnnounced &&
      state.count < state.announced) {
    throw FtpError(FtpErrorNumber::incomplete, "Only " + std::to_string(state.count) + " of " +
                                                   std::to_string(state.announced) + " bytes have come.");
  }
  if (order.progress && state.finalReply->completion()) order.progress(state.count, state.announced);
  return {*std::move(state.finalReply), state.count};
}

/// Takes what the server says meanwhile. False when nothing has come.
bool FtpTransfer::takeReplies(Reception& state) {
  bool any = false;
  try {
    while (!state.finalReply && !state.controlLost) {
      auto reply = control_.pollReply();
      if (!reply) break;
      any = true;
      if (!reply->preliminary()) {
        state.lastEvent = steady_clock::now();
        state.finalReply = std::move(reply);
        break;
      }
      // Only the first one buys time.
      if (state.preliminaries++ == 0) state.lastEvent = steady_clock::now();
      if (state.preliminaries == FtpControl::kMostReplies) {
        throw FtpError(FtpErrorNumber::badReply,
                       "The server sends replies that answer nothing, without end.");
      }
      if (const auto size = announcedSize(reply->text)) {
        state.announced = *size;
        state.sizeAnnounced = true;
      }
    }
  } catch (const FtpError& error) {
    const bool dataCame = state.dataEnded || data_.socket.is_open();
    if (error.number() != static_cast<int>(FtpErrorNumber::connectionLost) || !dataCame) throw;
    state.controlLost = any = true;
  }
  return any;
}

/// Active: takes the server's connection. One from any other machine is closed at once.
void FtpTransfer::tryAccept() {
  acceptor_.consumeReadiness();
  asio::error_code error;
  asio::ip::tcp::endpoint peer;
  TcpSocket accepted(io_.context().get_executor());
  acceptor_.socket.accept(accepted, peer, error);
  if (error || plainAddress(peer.address()) != plainAddress(control_.remoteEndpoint().address())) return;
  data_.socket = std::move(accepted);
  data_.socket.non_blocking(true, error);
  acceptor_.close();
}

/// Active through SOCKS: takes the connection once the proxy has told who is at the other end of it. Only
/// when the channel is ready: its socket must not move while it is being watched.
void FtpTransfer::tryTakeFromProxy() {
  std::string why;
  try {
    const auto peer = pollSocksPeer(bound_, socks_->login.version, boundAnswer_);
    if (!peer) return;
    asio::error_code peerIsName, serverIsName;
    const auto address = asio::ip::make_address(peer->host, peerIsName);
    const auto server = asio::ip::make_address(socks_->server.host, serverIsName);
    if (peerIsName || serverIsName || address.is_unspecified() ||
        plainAddress(address) == plainAddress(server)) {
      data_.socket = std::move(bound_.socket);
      return;
    }
    why = "the proxy let in another machine than the server";
  } catch (const FtpError& error) {
    why = error.what();
  }
  bound_.close();
  throw FtpError(FtpErrorNumber::dataConnectionFailed,
                 "The server's data connection did not come: " + why + ".");
}

/// Reads until nothing more has come or the server has ended. False when nothing has come.
bool FtpTransfer::readData(const Order& order, Reception& state) {
  data_.consumeReadiness();
  bool any = false;
  for (;;) {
    asio::error_code error;
    const std::size_t size = data_.socket.read_some(asio::buffer(buffer_.get() + 1, kBufferSize), error);
    if (error == asio::error::would_block || error == asio::error::interrupted) return any;
    const auto now = steady_clock::now();
    state.lastEvent = now;
    any = true;
    if (error) {
      // Only an end in order is the end of a file (RFC 959 §3.4.1); a reset is not, whatever the reply says.
      state.dataBroken = error != asio::error::eof;
      data_.close();
      state.dataEnded = true;
      return true;
    }
    if (state.count == 0) state.windowStart = now;  // a late beginning is not a slow one
    state.count += static_cast<std::int64_t>(size);
    state.windowCount += static_cast<std::int64_t>(size);
    try {
      order.sink(buffer_.get() + 1, size);
    } catch (...) {
      throw SinkFailure{std::current_exception()};
    }
    if (order.progress && now - state.lastProgress >= kProgressInterval) {
      state.lastProgress = now;
      order.progress(state.count, state.announced);
    }
    io_.pumpIfDue(now);
  }
}

void FtpTransfer::wait(const Order& order, Reception& state) {
  const auto now = steady_clock::now();
  if (data_.socket.is_open() && now - state.windowStart > order.timeout) {
    if (state.windowCount < std::chrono::duration_cast<std::chrono::seconds>(order.timeout).count()) {
      throw FtpError(FtpErrorNumber::timedOut, "The server sends less than a byte a second.");
    }
    state.windowStart = now;
    state.windowCount = 0;
  }
  const bool forReply = !state.finalReply && !state.controlLost;
  if (forReply) control_.channel().arm();
  data_.arm();
  acceptor_.arm();
  bound_.arm();
  const auto arrived = [&] {
    return data_.ready() || acceptor_.ready() || bound_.ready() || (forReply && control_.channel().ready());
  };
  if (io_.runUntil(arrived, state.lastEvent + order.timeout)) return;
  if (state.dataEnded) {
    // The data are here; what misses is the server's word that they are all.
    state.controlLost = true;
    return;
  }
  throw FtpError(FtpErrorNumber::timedOut, data_.socket.is_open()
                                               ? "Nothing came over the data connection in time."
                                               : "The server did not open the data connection in time.");
}

/// Ends a transfer whose reply is outstanding (RFC 959 §4.1.3, ABOR). Servers answer it with 426 and 226,
/// with 226 or 225 alone, or not at all, and the transfer's own reply may be on its way too: the answer to
/// SYST, which has a code of its own, tells when all of them are in. Without it the connection is closed.
void FtpTransfer::endInOrder(milliseconds timeout) {
  const PumpedIo::Shield shield(io_);
  try {
    control_.sendAbort();
    closeData();  // a server that is stuck in sending wakes up by this
    const auto deadline = steady_clock::now() + std::min(timeout, kFarewell);
    for (int code = 0; code != 215;) {
      code = control_.readReply(deadline).code;
      if (code == 421) return control_.close();
    }
  } catch (...) {
    control_.close();
  }
}

}  // namespace quillmoor
