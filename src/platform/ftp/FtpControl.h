// The control connection of an FTP session: command lines out, replies in, and the commands sent ahead.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ftp/FtpReply.h"
#include "platform/net/PumpedIo.h"

namespace quillmoor {

/// Every operation raises FtpError: connectionLost (or the code of a 421) when the server has gone, timedOut
/// when it says nothing, tooLong and badReply when what it says is unusable. After any of them the connection
/// is of no use. Raises Aborted out of waits.
class FtpControl {
 public:
  explicit FtpControl(PumpedIo& io) : io_(io), channel_(io) {}

  /// Called with a reply that answers no command, and with preliminary replies.
  std::function<void(const FtpReply&)> onStray;

  /// Who answers, for the errors: one of the names in FtpReply.h. Closing makes it the server.
  void setSpeaker(const char* speaker) { reader_.speaker = speaker; }
  const std::string& speaker() const { return reader_.speaker; }

  /// Connects to the first of the endpoints that answers; they share the time. `host` is what an error calls
  /// them.
  void connect(const std::vector<asio::ip::tcp::endpoint>& endpoints, const std::string& host,
               std::chrono::milliseconds timeout);
  void close();
  bool isOpen() const { return channel_.socket.is_open(); }

  asio::ip::address localAddress() const;
  /// The peer the connection was made to; unspecified while there is none.
  const asio::ip::tcp::endpoint& remoteEndpoint() const { return remote_; }
  TcpChannel& channel() { return channel_; }

  /// Sends a command line and returns its final reply, passing over preliminary ones. Takes the reply of the
  /// same line where it was sent ahead. Does as `withEitherForm`.
  FtpReply exchange(const std::string& line, std::chrono::milliseconds timeout);

  /// Sends a command line whose replies the caller takes himself by `pollReply`.
  void send(const std::string& line, std::chrono::milliseconds timeout);

  /// RFC 854 has a byte 255 sent twice, for one alone begins a Telnet command; but many servers take both for
  /// the name. Performs `ask`, which sends `line` and returns the final reply, and where the server knows no
  /// such name (550), once more with such bytes sent once. What the server has shown to understand is kept to
  /// for the session.
  template <class Ask>
  FtpReply withEitherForm(std::string_view line, Ask ask);

  /// Whether the type in force is ASCII: the last TYPE that the server has accepted, whoever sent it.
  bool asciiType() const { return asciiType_; }

  /// The next reply if it has come, preliminary or not; does not wait. Raises when the connection has ended.
  std::optional<FtpReply> pollReply();
  FtpReply readReply(Deadline deadline);
  /// The next reply that is not a preliminary one; those go to `onStray`.
  FtpReply readFinalReply(Deadline deadline);

  /// Sends the lines in one go and remembers them; false where they stay here. See FtpClient::sendAhead.
  bool sendAhead(const std::vector<std::string>& lines);
  /// For what is on the other end of this connection: sends no command before the reply to the one before.
  void sendNothingAhead() { takesAhead_ = false; }
  /// False once the server was seen to lose commands that arrived while it was busy.
  bool takesCommandsAhead() const { return takesAhead_; }
  bool hasSentAhead() const { return !ahead_.empty(); }

  /// The Telnet "interrupt process" and "synch" of RFC 959 §4.1.3 (RFC 854), then ABOR, and SYST as a mark
  /// behind its replies.
  void sendAbort();

  /// Raises FtpRefusal for the answer to this command line.
  [[noreturn]] void raiseRefused(const std::string& line, const FtpReply& reply) const;

  /// Refuses what cannot be one command: a CR, LF or NUL inside would make it two. Raises badArgument.
  static void checkLine(std::string_view line);

  /// So many replies may come in a row that end no command; more are a flood and raise badReply.
  static constexpr std::size_t kMostReplies = 100;

 private:
  void write(const std::string& bytes, std::chrono::milliseconds timeout);
  bool receive();
  void passStrayReplies();
  [[noreturn]] void raiseSilent() const;
  [[noreturn]] void raiseClosed(const FtpReply& reply) const;
  [[noreturn]] void raiseFlood() const;
  std::optional<FtpReply> takeAheadReply(std::size_t position, std::chrono::milliseconds timeout);
  std::vector<FtpReply> resynchronise(std::chrono::milliseconds timeout);
  std::string wireForm(std::string_view line) const;
  void noteType(std::string_view line, const FtpReply& reply);
  static bool isOfName(std::string_view line);

  PumpedIo& io_;
  TcpChannel channel_;
  asio::ip::tcp::endpoint remote_;
  FtpReplyReader reader_;
  std::deque<std::string> ahead_;
  bool takesAhead_ = true;
  bool ended_ = false;
  bool asciiType_ = true;  // RFC 959 §5.1: the type is ASCII until said otherwise
  enum class Bytes255 { unknown, twice, once } bytes255_ = Bytes255::unknown;
};

template <class Ask>
FtpReply FtpControl::withEitherForm(std::string_view line, Ask ask) {
  FtpReply first = ask();
  if (bytes255_ != Bytes255::unknown || !isOfName(line) || line.find('\xFF') == std::string_view::npos)
    return first;
  if (first.completion()) bytes255_ = Bytes255::twice;
  if (first.code != 550) return first;
  bytes255_ = Bytes255::once;
  try {
    FtpReply second = ask();
    if (second.completion()) return second;
  } catch (...) {
    bytes255_ = Bytes255::unknown;
    throw;
  }
  bytes255_ = Bytes255::unknown;
  return first;
}

}  // namespace quillmoor
