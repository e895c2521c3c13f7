// FTP replies: splitting the control connection's bytes into replies, and extracting what they contain. RFC
// 959 §4.2 (replies), §4.2.1 (227), appendix II (257); RFC 2428 (229).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ftp/FtpClient.h"

namespace quillmoor {

/// Names of a control connection's peer in error messages.
inline constexpr const char* kServer = "server";
inline constexpr const char* kProxy = "proxy";
/// After an FTP proxy's login: it relays the server's replies and sends some of its own.
inline constexpr const char* kServerOrProxy = "server, or the proxy before it,";

/// An error that also carries the refusing reply, for the progress event. Its number is the reply's code.
class FtpRefusal : public FtpError {
 public:
  FtpRefusal(const std::string& description, FtpReply reply)
      : FtpError(reply.code, description), reply_(std::move(reply)) {}
  const FtpReply& reply() const { return reply_; }

 private:
  FtpReply reply_;
};

/// Splits the bytes of a control connection into replies. Raises FtpError `tooLong` when a line exceeds
/// kMaxLine or a reply kMaxReply bytes, `badReply` when a reply does not begin with three digits; the
/// connection is then unusable.
class FtpReplyReader {
 public:
  static constexpr std::size_t kMaxLine = 16 * 1024;
  static constexpr std::size_t kMaxReply = 256 * 1024;

  /// The peer, for error messages.
  std::string peer = kServer;

  void append(std::string_view bytes);
  /// The next complete reply, preliminary ones included; nullopt when more bytes are needed.
  std::optional<FtpReply> next();
  void clear();

 private:
  std::string bytes_;
  std::size_t at_ = 0;    // start of the first unprocessed line
  std::size_t scan_ = 0;  // no line end before this
  std::string multiLineCode_;
  FtpReply reply_;
};

/// Port of a 229 reply: "(|||port|)" with any character as delimiter.
std::optional<std::uint16_t> epsvPort(std::string_view replyText);

/// Port of a 227 reply: the last two of six comma-separated numbers, wherever they are in the text. The
/// address is ignored on purpose: data connections go to the control connection's host only.
std::optional<std::uint16_t> pasvPort(std::string_view replyText);

/// Folder named by a 257 reply; nullopt when there is none.
std::optional<std::string> pwdPath(std::string_view replyText);

/// The size that a 150 reply mentions as "(N bytes)": the last one, as a file name may contain another.
std::optional<std::int64_t> announcedSize(std::string_view replyText);

/// The size in a 213 reply to SIZE (RFC 3659 §4.2); nullopt for any other reply.
std::optional<std::int64_t> statedSize(const FtpReply& reply);

/// The reply as the end of a sentence: "550 No such file" from a server, "the proxy says 530 No" from a
/// proxy.
std::string describeReply(std::string_view peer, const FtpReply& reply);

/// Printable reply text: control characters (see PrintableText) except CR LF between lines become "?", tabs
/// become spaces, and the secret, if any, is masked.
std::string printableReply(std::string_view replyText, std::string_view secret);

}  // namespace quillmoor
