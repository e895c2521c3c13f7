#include "platform/ftp/FtpControl.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/net/KeepAlive.h"
#include "platform/system/ErrorText.h"

namespace quillmoor {
namespace {

using std::chrono::milliseconds;

// A reply to a command sent ahead that is not there by then is asked after (see resynchronise).
constexpr milliseconds kAheadPatience{4000};
constexpr std::chrono::seconds kKeepAlive{60};

Deadline in(milliseconds time) {
  return std::chrono::steady_clock::now() + time;
}

bool isTimeOut(const FtpError& error) {
  return error.number() == static_cast<int>(FtpErrorNumber::timedOut);
}

/// What a server answers to SYST when it does not know it (RFC 959 §5.4).
bool isUnknownCommand(const FtpReply& reply) {
  return reply.code >= 500 && reply.code <= 502;
}

}  // namespace

/// RFC 854: a byte 255 inside a line is doubled, else it would begin a Telnet command.
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

/// Of the commands whose argument is a name, as the server sees it.
bool FtpControl::isOfName(std::string_view line) {
  return line.starts_with("CWD ") || line.starts_with("RETR ") || line.starts_with("SIZE ");
}

void FtpControl::noteType(std::string_view line, const FtpReply& reply) {
  if (!reply.completion()) return;
  if (line == "TYPE A") asciiType_ = true;
  if (line == "TYPE I") asciiType_ = false;
}

void FtpControl::raiseSilent() const {
  throw FtpError(FtpErrorNumber::timedOut, "The " + speaker() + " did not answer in time.");
}

/// 421: the service is not available and the server closes the control connection (RFC 959 §4.2.1).
void FtpControl::raiseClosed(const FtpReply& reply) const {
  throw FtpError(reply.code, "The " + speaker() + " closed the session: " + saidBy(speaker(), reply));
}

void FtpControl::raiseRefused(const std::string& line, const FtpReply& reply) const {
  throw FtpRefusal("The " + speaker() + " refused " + line.substr(0, line.find(' ')) + ": " + reply.text,
                   reply);
}

void FtpControl::raiseFlood() const {
  throw FtpError(FtpErrorNumber::badReply,
                 "The " + speaker() + " sends replies that answer nothing, without end.");
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
  const Deadline deadline = in(timeout);
  asio::error_code error = asio::error::host_not_found;
  for (std::size_t i = 0; i < endpoints.size(); ++i) {
    const auto now = std::chrono::steady_clock::now();
    const auto share = (deadline - now) / static_cast<long>(endpoints.size() - i);
    error = connectTo(io_, channel_, endpoints[i], now + share);
    if (!error) break;
  }
  if (error) {
    throw FtpError(FtpErrorNumber::connectFailed,
                   "Cannot connect to " + host + ": " + ErrorText(error) + ".");
  }
  asio::error_code ignored;
  remote_ = channel_.socket.remote_endpoint(ignored);
  channel_.socket.set_option(asio::ip::tcp::no_delay(true), ignored);
  // Firewalls forget a silent connection during a long transfer.
  KeepConnectionAlive(static_cast<std::uintptr_t>(channel_.socket.native_handle()), kKeepAlive);
}

void FtpControl::close() {
  channel_.close();
  remote_ = {};
  reader_.clear();
  ahead_.clear();
  takesAhead_ = true;
  ended_ = false;
  asciiType_ = true;
  bytes255_ = Bytes255::unknown;
  setSpeaker(kServer);
}

asio::ip::address FtpControl::localAddress() const {
  asio::error_code ignored;
  return channel_.socket.local_endpoint(ignored).address();
}

void FtpControl::write(const std::string& bytes, milliseconds timeout) {
  const asio::error_code error = writeAll(io_, channel_, bytes, in(timeout));
  if (error == asio::error::timed_out) raiseSilent();
  if (error) {
    throw FtpError(FtpErrorNumber::connectionLost,
                   "The connection to the " + speaker() + " is lost: " + ErrorText(error) + ".");
  }
}

bool FtpControl::receive() {
  char bytes[FtpReplyReader::kMaxLine];
  channel_.consumeReadiness();
  asio::error_code error;
  const std::size_t size = channel_.socket.read_some(asio::buffer(bytes), error);
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
    if (ended_)
      throw FtpError(FtpErrorNumber::connectionLost, "The " + speaker() + " closed the connection.");
    if (!receive() && !ended_) return std::nullopt;
  }
}

FtpReply FtpControl::readReply(Deadline deadline) {
  // Replies that are there already are no reason to forget the pump, or the time: they may be without end.
  // The time is that before the pump: in a box of the user's it may have passed while a reply came.
  const auto now = std::chrono::steady_clock::now();
  io_.pumpIfDue(now);
  if (now >= deadline) raiseSilent();
  std::optional<FtpReply> reply = reader_.next();
  if (!reply && std::chrono::steady_clock::now() >= deadline) reply = pollReply();
  // Behind a command the reply is never there yet, so the first thing is to wait: that saves a vain read.
  const auto arrived = [&] {
    if (!reply && channel_.ready()) reply = pollReply();
    if (!reply) channel_.arm();
    return reply.has_value();
  };
  if (!channel_.socket.is_open()) reply = pollReply();
  if (!io_.runUntil(arrived, deadline)) raiseSilent();
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
    // What was sent ahead went in the first form, so that the second has to be sent.
    const auto at = std::exchange(again, true) ? ahead_.end() : std::find(ahead_.begin(), ahead_.end(), line);
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
  // With replies outstanding from before, an old answer could be taken for a new one of the same line.
  if (!takesAhead_ || ended_ || !ahead_.empty()) return false;
  passStrayReplies();
  std::string wire;
  for (const auto& line : lines) {
    checkLine(line);
    wire += wireForm(line);
  }
  // What does not go out at once is not sent at all: a hint is not worth waiting for.
  asio::error_code error;
  const std::size_t sent = channel_.socket.write_some(asio::buffer(wire), error);
  if (error) return false;
  if (sent != wire.size()) {  // half a command is on its way
    close();
    return false;
  }
  ahead_.insert(ahead_.end(), lines.begin(), lines.end());
  return true;
}

/// The reply to the line at `position` of those sent ahead; the replies before it are let pass. Nothing when
/// the server has lost that line.
std::optional<FtpReply> FtpControl::takeAheadReply(std::size_t position, milliseconds timeout) {
  const milliseconds patience = std::min(timeout, kAheadPatience);
  try {
    for (;;) {
      FtpReply reply = readFinalReply(in(patience));
      noteType(ahead_.front(), reply);
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

/// Some servers throw away what arrives while they work on a command. A SYST, which has a reply code that no
/// other of our commands has, tells how many of the lines sent ahead were heard: their replies, returned,
/// come before its own. Nothing is sent ahead on this connection any more.
std::vector<FtpReply> FtpControl::resynchronise(milliseconds timeout) {
  takesAhead_ = false;
  const std::deque<std::string> lines = std::exchange(ahead_, {});
  write(wireForm("SYST"), timeout);
  std::vector<FtpReply> replies;
  while (replies.size() <= lines.size()) {
    const bool mayBeMarkers = !replies.empty() && isUnknownCommand(replies.back());
    try {
      replies.push_back(readFinalReply(in(mayBeMarkers ? std::min(timeout, kAheadPatience) : timeout)));
    } catch (const FtpError& error) {
      // Silence after such a reply: it was the marker's, from a server that does not know SYST. After any
      // other the server is still at work, and what it says later would be taken for the answer to another
      // command: this session is of no more use.
      if (!mayBeMarkers || !isTimeOut(error)) throw;
      break;
    }
    if (replies.back().code == 215) break;
  }
  replies.pop_back();
  for (std::size_t i = 0; i < replies.size(); ++i) noteType(lines[i], replies[i]);
  return replies;
}

void FtpControl::sendAbort() {
  // The urgent pointer makes a server look up from its data; the data mark then ends the interruption.
  constexpr char interrupt[] = {'\xFF', '\xF4', '\xFF'};
  const std::string commands =
      "\xF2"
      "ABOR\r\nSYST\r\n";
  asio::error_code ignored;
  channel_.socket.send(asio::buffer(interrupt), asio::socket_base::message_out_of_band, ignored);
  channel_.socket.send(asio::buffer(commands), 0, ignored);
}

}  // namespace quillmoor
