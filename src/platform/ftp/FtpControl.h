// The control connection of an FTP session: sends command lines and receives replies, also for commands sent
// ahead.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ftp/FtpReply.h"
#include "platform/net/NetStream.h"

namespace quillmoor {

/// Every operation raises FtpError: connectionLost (or the code of a 421) when the server has closed the
/// connection, timedOut when it does not reply, tooLong and badReply when its reply is unusable. After any of
/// them the connection is unusable. Waits raise Aborted.
class FtpControl {
 public:
  explicit FtpControl(PumpedIo& io) : io_(io), stream_(io) {}

  /// Called with replies that answer no command, and with preliminary replies.
  std::function<void(const FtpReply&)> onStray;

  /// The peer, for error messages: one of the names in FtpReply.h. `close` resets it to the server.
  void setPeer(const char* peer) { reader_.peer = peer; }
  const std::string& peer() const { return reader_.peer; }

  /// Connects to the first endpoint that answers; they share the timeout. `host` names them in error
  /// messages.
  void connect(const std::vector<asio::ip::tcp::endpoint>& endpoints, const std::string& host,
               std::chrono::milliseconds timeout);
  void close();
  bool isOpen() const { return stream_.isOpen(); }

  /// Encrypts the connection (RFC 4217 §4) for the server `host`; whatever it has sent before is discarded,
  /// as anybody may have sent it. For `accepted` see FtpClient::certificate. Raises FtpError: tlsFailed,
  /// certificateRejected, timedOut. `tls` shows the certificate then, too.
  void startTls(const std::string& host, const std::string& accepted, std::chrono::milliseconds timeout);
  /// The encryption, which data connections share; null without it. Kept until the next connect.
  TlsLogin* tls() { return tls_.get(); }

  asio::ip::address localAddress() const;
  /// The peer's address; unspecified while not connected.
  const asio::ip::tcp::endpoint& remoteEndpoint() const { return remote_; }
  NetStream& stream() { return stream_; }

  /// Sends a command line and returns its final reply; preliminary ones go to `onStray`. Where the line was
  /// sent ahead, only reads its reply. Includes `withEitherForm`.
  FtpReply exchange(const std::string& line, std::chrono::milliseconds timeout);

  /// Sends a command line; the caller reads its replies by `pollReply`.
  void send(const std::string& line, std::chrono::milliseconds timeout);

  /// RFC 854 requires a byte 255 to be sent twice, as a single one begins a Telnet command; but many servers
  /// take both for the name. Calls `ask`, which sends `line` and returns the final reply; if the server does
  /// not know the name (550), calls it again with such bytes sent once. The form that the server has accepted
  /// is kept for the session.
  template <class Ask>
  FtpReply withEitherForm(std::string_view line, Ask ask);

  /// Whether the transfer type is ASCII: the last TYPE that the server accepted, whoever sent it.
  bool asciiType() const { return asciiType_; }

  /// The next reply if it has arrived, preliminary or not; does not wait. Raises when the connection has
  /// ended.
  std::optional<FtpReply> pollReply();
  FtpReply readReply(Deadline deadline);
  /// The next reply that is not a preliminary one; those go to `onStray`.
  FtpReply readFinalReply(Deadline deadline);

  /// Sends the lines at once and records them; false when they were not sent. See FtpClient::sendAhead.
  bool sendAhead(const std::vector<std::string>& lines);
  /// Sends the lines at once because they will probably be next; other lines may be sent ahead after all.
  void sendGuessAhead(const std::vector<std::string>& lines);
  /// After all outstanding replies have been read by other means.
  void forgetAhead() { ahead_.clear(); }
  /// For a peer that needs each reply before the next command: disables sending ahead.
  void sendNothingAhead() { takesAhead_ = false; }
  /// False once the server has lost commands that arrived while it was busy.
  bool takesCommandsAhead() const { return takesAhead_; }
  bool hasSentAhead() const { return !ahead_.empty(); }

  /// The Telnet "interrupt process" and "synch" of RFC 959 §4.1.3 (RFC 854), then ABOR, and SYST to mark the
  /// end of its replies. Encrypted, without the Telnet commands: urgent data has no place there.
  void sendAbort();

  /// Raises FtpRefusal for the reply to this command line.
  [[noreturn]] void raiseRefused(const std::string& line, const FtpReply& reply) const;

  /// Raises badArgument for a line with CR, LF or NUL, which would make it two commands.
  static void checkLine(std::string_view line);

  /// Maximum number of consecutive replies that end no command; more raise badReply.
  static constexpr std::size_t kMostReplies = 100;

 private:
  void write(const std::string& bytes, std::chrono::milliseconds timeout);
  bool receive();
  void passStrayReplies();
  [[noreturn]] void raiseTimedOut() const;
  [[noreturn]] void raiseClosed(const FtpReply& reply) const;
  [[noreturn]] void raiseFlood() const;
  bool writeAhead(const std::vector<std::string>& lines);
  std::optional<FtpReply> takeAheadReply(std::size_t position, std::chrono::milliseconds timeout);
  std::vector<FtpReply> resynchronise(std::chrono::milliseconds timeout);
  std::string wireForm(std::string_view line) const;
  void noteType(std::string_view line, const FtpReply& reply);
  static bool hasNameArgument(std::string_view line);

  PumpedIo& io_;
  std::unique_ptr<TlsLogin> tls_;  // outlives the stream
  NetStream stream_;
  asio::ip::tcp::endpoint remote_;
  FtpReplyReader reader_;
  struct AheadLine {
    std::string line;
    bool stale;  // a guess that was wrong: its reply answers no later line
  };
  std::deque<AheadLine> ahead_;
  bool aheadIsGuess_ = false;
  bool takesAhead_ = true;
  std::vector<asio::ip::tcp::endpoint> loseAhead_;  // servers that have lost commands sent ahead
  bool ended_ = false;
  bool asciiType_ = true;  // RFC 959 §5.1: the default type
  enum class Bytes255 { unknown, twice, once } bytes255_ = Bytes255::unknown;
};

template <class Ask>
FtpReply FtpControl::withEitherForm(std::string_view line, Ask ask) {
  FtpReply first = ask();
  if (bytes255_ != Bytes255::unknown || !hasNameArgument(line) || line.find('\xFF') == std::string_view::npos)
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
