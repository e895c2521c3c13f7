// Replies of an FTP server: reading them from the control connection's bytes, and what is said in them.
// RFC 959 §4.2 (replies), §4.2.1 (227), appendix II (257); RFC 2428 (229).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ftp/FtpClient.h"

namespace quillmoor {

/// Who talks on the other end of a control connection.
inline constexpr const char* kServer = "server";
inline constexpr const char* kProxy = "proxy";
/// Behind an FTP proxy: it passes on what the server says, and says some things itself.
inline constexpr const char* kServerOrProxy = "server, or the proxy before it,";

/// A refusal that also carries the reply, for the progress event. Its number is the reply's code.
class FtpRefusal : public FtpError {
 public:
  FtpRefusal(const std::string& description, FtpReply reply)
      : FtpError(reply.code, description), reply_(std::move(reply)) {}
  const FtpReply& reply() const { return reply_; }

 private:
  FtpReply reply_;
};

/// Cuts the bytes of a control connection into replies. Raises FtpError `tooLong` when a line passes
/// kMaxLine or a reply kMaxReply bytes, `badReply` when a reply does not begin with three digits; the
/// connection is of no use then.
class FtpReplyReader {
 public:
  static constexpr std::size_t kMaxLine = 16 * 1024;
  static constexpr std::size_t kMaxReply = 256 * 1024;

  /// Who is talking, for the errors.
  std::string speaker = kServer;

  void append(std::string_view bytes);
  /// The next whole reply, preliminary ones included; nothing when more bytes are needed.
  std::optional<FtpReply> next();
  void clear();

 private:
  std::string bytes_;
  std::size_t at_ = 0;    // start of the first line not yet taken
  std::size_t scan_ = 0;  // no line end before this
  std::string multiLineCode_;
  FtpReply reply_;
};

/// Port of a 229 reply: "(|||port|)", the delimiter being any character.
std::optional<std::uint16_t> epsvPort(std::string_view replyText);

/// Port of a 227 reply: the last two of six numbers joined by commas, wherever they stand. The address is
/// left alone on purpose: data connections go to the control connection's host and nowhere else.
std::optional<std::uint16_t> pasvPort(std::string_view replyText);

/// Folder named by a 257 reply; nothing when there is none.
std::optional<std::string> pwdPath(std::string_view replyText);

/// The size that a 150 reply mentions as "(N bytes)": the last one, for a file's name may hold another.
std::optional<std::int64_t> announcedSize(std::string_view replyText);

/// The size that a 213 reply to SIZE tells (RFC 3659 §4.2); nothing of any other reply.
std::optional<std::int64_t> statedSize(const FtpReply& reply);

/// What a reply says, at the end of a sentence: "550 No such file" of a server, "the proxy says 530 No" of a
/// proxy.
std::string saidBy(std::string_view speaker, const FtpReply& reply);

/// Reply text fit to be shown: control characters (see PrintableText) but CR LF between lines become "?", a
/// tab a blank, and the secret, if any, is blotted out.
std::string printableReply(std::string_view replyText, std::string_view secret);

}  // namespace quillmoor
