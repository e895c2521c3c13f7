#include "platform/ftp/FtpControl.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/net/KeepAlive.h"
#include "platform/net/NetError.h"
#include "platform/system/ErrorText.h"

namespace quillmoor {
namespace {

using std::chrono::milliseconds;

// Time to wait for the reply to a command sent ahead before resynchronising.
constexpr milliseconds kAheadTimeout{4000};
constexpr std::chrono::seconds kKeepAlive{60};

Deadline in(milliseconds time) {
  return std::chrono::steady_clock::now() + time;
}

bool isTimeOut(const FtpError& error) {
  return error.number() == static_cast<int>(FtpErrorNumber::timedOut);
}

/// The reply to SYST of a server that does not know it (RFC 959 §5.4).
bool isUnknownCommand(const FtpReply& reply) {
  return reply.code >= 500 && reply.code <= 502;
}

}  // namespace

/// RFC 854: a byte 255 in a line is doubled, as a single one would begin a Telnet command.
std::string FtpControl::wireForm(std::string_view line) const {
  std::string wire;
  wire.reserve(line.size() + 2);
  for (const char c : line) {
    wire += c;
    if (c == '\xFF' && bytes255_ != Bytes255::once) wire += c;
  }
  wire += "\r\n";
  return wire;
}

/// Whether the command's argument is a name.
bool FtpControl::hasNameArgument(std::string_view line) {
  return line.starts_with("CWD ") || line.starts_with("RETR ") || line.starts_with("SIZE ");
}

void FtpControl::noteType(std::string_view line, const FtpReply& reply) {
  if (!reply.completion()) return;
  if (line == "TYPE A") asciiType_ = true;
  if (line == "TYPE I") asciiType_ = false;
}

void FtpControl::raiseTimedOut() const {
  throw FtpError(FtpErrorNumber::timedOut, "The " + peer() + " did not answer in time.");
}

/// 421: the service is not available and the server closes the control connection (RFC 959 §4.2.1).
void FtpControl::raiseClosed(const FtpReply& reply) const {
  throw FtpError(reply.code, "The " + peer() + " closed the session: " + describeReply(peer(), reply));
}

void FtpControl::raiseRefused(const std::string& line, const FtpReply& reply) const {
  throw FtpRefusal("The " + peer() + " refused " + line.substr(0, line.find(' ')) + ": " + reply.text, reply);
}

void FtpControl::raiseFlood() const {
  throw FtpError(FtpErrorNumber::badReply,
                 "The " + peer() + " keeps sending replies that answer no command.");
}

void FtpControl::checkLine(std::string_view line) {
  if (line.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) {
    throw FtpError(FtpErrorNumber::badArgument,
                   "A line break or a zero byte cannot be part of an FTP command; nothing was sent.");
  }
}

void FtpControl::connect(const std::vector<asio::ip::tcp::endpoint>& endpoints, const std::string& host,
                         milliseconds timeout) {
  close();
  tls_.reset();
  const Deadline deadline = in(timeout);
  asio::error_code error = asio::error::host_not_found;
  for (std::size_t i = 0; i < endpoints.size(); ++i) {
    const auto now = std::chrono::steady_clock::now();
    const auto share = (deadline - now) / static_cast<long>(endpoints.size() - i);
    error = connectTo(io_, stream_.channel(), endpoints[i], now + share);
    if (!error) break;
  }
  if (error) {
    throw FtpError(FtpErrorNumber::connectFailed,
                   "Cannot connect to " + host + ": " + ErrorText(error) + ".");
  }
  asio::error_code ignored;
  TcpSocket& socket = stream_.channel().socket;
  remote_ = socket.remote_endpoint(ignored);
  socket.set_option(asio::ip::tcp::no_delay(true), ignored);
  takesAhead_ = std::find(loseAhead_.begin(), loseAhead_.end(), remote_) == loseAhead_.end();
  // Firewalls drop an idle connection during a long transfer.
  KeepConnectionAlive(static_cast<std::uintptr_t>(socket.native_handle()), kKeepAlive);
}

void FtpControl::startTls(const std::string& host, const std::string& accepted, milliseconds timeout) {
  reader_.clear();
  ahead_.clear();
  try {
    tls_ = std::make_unique<TlsLogin>(host, accepted);
    stream_.startTls(*tls_);
  } catch (const NetError& error) {
    throw FtpError(FtpErrorNumber::tlsFailed, std::string(error.what()) + ".");
  }
  const asio::error_code error = stream_.handshake(in(timeout));
  if (!error) return;
  if (error == asio::error::timed_out) raiseTimedOut();
  if (error != TlsConnection::kWrongCertificate) {
    throw FtpError(FtpErrorNumber::tlsFailed,
                   "The connection to the " + peer() + " cannot be encrypted: " + stream_.problem() + ".");
  }
  const bool changed = !tls_->accepted().empty();
  throw FtpError(FtpErrorNumber::certificateRejected,
                 "The certificate of " + host + " is not trusted (" + tls_->certificate()->problem +
                     (changed ? "; it is not the one that was accepted" : "") + "); nothing was sent. " +
                     DescribeCertificate(*tls_->certificate()) + ".");
}

void FtpControl::close() {
  stream_.close();
  remote_ = {};
  reader_.clear();
  ahead_.clear();
  takesAhead_ = true;
  ended_ = false;
  asciiType_ = true;
  bytes255_ = Bytes255::unknown;
  setPeer(kServer);
}

asio::ip::address FtpControl::localAddress() const {
  asio::error_code ignored;
  return stream_.channel().socket.local_endpoint(ignored).address();
}

void FtpControl::write(const std::string& bytes, milliseconds timeout) {
  const asio::error_code error = stream_.writeAll(bytes, in(timeout));
  if (error == asio::error::timed_out) raiseTimedOut();
  if (error) {
    throw FtpError(FtpErrorNumber::connectionLost,
                   "The connection to the " + peer() + " is lost: " +
                       (stream_.problem().empty() ? ErrorText(error) : stream_.problem()) + ".");
  }
}

bool FtpControl::receive() {
  char bytes[FtpReplyReader::kMaxLine];
  stream_.consumeReadiness();
  asio::error_code error;
  const std::size_t size = stream_.readSome(bytes, sizeof bytes, error);
  if (!error) {
    reader_.append({bytes, size});
    return true;
  }
  if (error != asio::error::would_block && error != asio::error::interrupted) ended_ = true;
  return false;
}

std::optional<FtpReply> FtpControl::pollReply() {
  for (;;) {
    if (auto reply = reader_.next()) return reply;
    if (ended_) throw FtpError(FtpErrorNumber::connectionLost, "The " + peer() + " closed the connection.");
    if (!receive() && !ended_) return std::nullopt;
  }
}

FtpReply FtpControl::readReply(Deadline deadline) {
  // Buffered replies must not bypass the pump or the deadline: there may be no end of them. The time is taken
  // before the pump, as a reply may arrive while a message box holds the pump up.
  const auto now = std::chrono::steady_clock::now();
  io_.pumpIfDue(now);
  if (now >= deadline) raiseTimedOut();
  std::optional<FtpReply> reply = reader_.next();
  if (!reply && std::chrono::steady_clock::now() >= deadline) reply = pollReply();
  // Right after a command there is no reply yet, so wait first: that saves a futile read.
  const auto arrived = [&] {
    if (!reply && stream_.ready()) reply = pollReply();
    if (!reply) stream_.arm();
    return reply.has_value();
  };
  if (!isOpen()) reply = pollReply();
  if (!io_.runUntil(arrived, deadline)) raiseTimedOut();
  return *std::move(reply);
}

FtpReply FtpControl::readFinalReply(Deadline deadline) {
  for (std::size_t passed = 0;; ++passed) {
    if (passed == kMostReplies) raiseFlood();
    FtpReply reply = readReply(deadline);
    if (reply.code == 421) raiseClosed(reply);
    if (!reply.preliminary()) return reply;
    if (onStray) onStray(reply);
  }
}

void FtpControl::passStrayReplies() {
  for (std::size_t passed = 0;; ++passed) {
    if (passed == kMostReplies) raiseFlood();
    auto reply = pollReply();
    if (!reply) return;
    if (reply->code == 421) raiseClosed(*reply);
    if (onStray) onStray(*reply);
  }
}

void FtpControl::send(const std::string& line, milliseconds timeout) {
  checkLine(line);
  if (!ahead_.empty()) takeAheadReply(ahead_.size() - 1, timeout);
  passStrayReplies();
  write(wireForm(line), timeout);
}

FtpReply FtpControl::exchange(const std::string& line, milliseconds timeout) {
  checkLine(line);
  bool again = false;
  return withEitherForm(line, [&] {
    // What was sent ahead had the first form, so the second form must be sent.
    const auto at = std::exchange(again, true)
                        ? ahead_.end()
                        : std::find_if(ahead_.begin(), ahead_.end(), [&](const AheadLine& sent) {
                            return !sent.stale && sent.line == line;
                          });
    if (at != ahead_.end()) {
      if (auto reply = takeAheadReply(static_cast<std::size_t>(at - ahead_.begin()), timeout))
        return *std::move(reply);
    }
    send(line, timeout);
    FtpReply reply = readFinalReply(in(timeout));
    noteType(line, reply);
    return reply;
  });
}

bool FtpControl::sendAhead(const std::vector<std::string>& lines) {
  if (aheadIsGuess_ && !ahead_.empty()) {
    const bool right = std::equal(
        ahead_.begin(), ahead_.end(), lines.begin(), lines.end(),
        [](const AheadLine& sent, const std::string& line) { return !sent.stale && sent.line == line; });
    if (right) {
      aheadIsGuess_ = false;
      return true;
    }
    for (AheadLine& sent : ahead_) sent.stale = true;
  } else if (!ahead_.empty()) {
    // With replies outstanding, an old reply could be taken for the one to a new, identical line.
    return false;
  } else if (takesAhead_ && !ended_) {
    passStrayReplies();
  }
  aheadIsGuess_ = false;
  return writeAhead(lines);
}

// No strays are passed here: the reply to the command in progress is still to come.
void FtpControl::sendGuessAhead(const std::vector<std::string>& lines) {
  if (ahead_.empty()) aheadIsGuess_ = writeAhead(lines);
}

bool FtpControl::writeAhead(const std::vector<std::string>& lines) {
  if (!takesAhead_ || ended_) return false;
  std::string wire;
  for (const auto& line : lines) {
    checkLine(line);
    wire += wireForm(line);
  }
  // Does not wait until the socket accepts more: this is only an optimisation.
  asio::error_code error;
  const std::size_t sent = stream_.writeSome(wire, error);
  if (error && !stream_.isEncrypted()) return false;
  if (error || sent != wire.size()) {  // part of a command has been sent
    close();
    return false;
  }
  for (const std::string& line : lines) ahead_.push_back({line, false});
  return true;
}

/// Returns the reply to the line at `position` of those sent ahead, discarding those before it; nullopt when
/// the server has lost that line.
std::optional<FtpReply> FtpControl::takeAheadReply(std::size_t position, milliseconds timeout) {
  const milliseconds wait = std::min(timeout, kAheadTimeout);
  try {
    for (;;) {
      FtpReply reply = readFinalReply(in(wait));
      noteType(ahead_.front().line, reply);
      ahead_.pop_front();
      if (position-- == 0) return reply;
    }
  } catch (const FtpError& error) {
    if (!isTimeOut(error)) throw;
  }
  const auto replies = resynchronise(timeout);
  if (position < replies.size()) return replies[position];
  return std::nullopt;
}

/// Some servers discard what arrives while they work on a command. SYST, whose reply code no other of our
/// commands has, shows how many of the lines sent ahead were received: their replies, which are returned,
/// come before its own. Disables sending ahead on this connection.
std::vector<FtpReply> FtpControl::resynchronise(milliseconds timeout) {
  takesAhead_ = false;
  loseAhead_.push_back(remote_);
  const std::deque<AheadLine> lines = std::exchange(ahead_, {});
  write(wireForm("SYST"), timeout);
  std::vector<FtpReply> replies;
  while (replies.size() <= lines.size()) {
    const bool mayBeSystReply = !replies.empty() && isUnknownCommand(replies.back());
    try {
      replies.push_back(readFinalReply(in(mayBeSystReply ? std::min(timeout, kAheadTimeout) : timeout)));
    } catch (const FtpError& error) {
      // No reply after such a one: it was the reply to SYST, from a server that does not know SYST. After any
      // other reply the server is still working, and its later reply would be taken for that to another
      // command: the session is unusable.
      if (!mayBeSystReply || !isTimeOut(error)) throw;
      break;
    }
    if (replies.back().code == 215) break;
  }
  replies.pop_back();
  for (std::size_t i = 0; i < replies.size(); ++i) noteType(lines[i].line, replies[i]);
  return replies;
}

void FtpControl::sendAbort() {
  // The urgent pointer makes a server interrupt its data transfer; the data mark ends the interruption.
  constexpr char interrupt[] = {'\xFF', '\xF4', '\xFF'};
  constexpr std::string_view kDataMark = "\xF2";
  const std::string commands = "ABOR\r\nSYST\r\n";
  asio::error_code ignored;
  if (stream_.isEncrypted()) {
    stream_.writeSome(commands, ignored);
    return;
  }
  TcpSocket& socket = stream_.channel().socket;
  socket.send(asio::buffer(interrupt), asio::socket_base::message_out_of_band, ignored);
  socket.send(asio::buffer(std::string(kDataMark) + commands), 0, ignored);
}

}  // namespace quillmoor
