// The FTP client: one control connection, one operation at a time, each blocking while it pumps.
//
// Protocol: RFC 959 (FTP), RFC 2428 (EPRT, EPSV), RFC 2389 (FEAT), RFC 2640 (UTF-8 names), RFC 4217 (TLS).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/Pump.h"
#include "platform/net/TlsCertificate.h"

namespace quillmoor {

/// Connection states. `connected` means logged in.
enum class FtpState { closed = 0, connecting = 1, connected = 2, closing = 3 };

/// The operation that a progress event is about. The value 14, the file transfer, is fixed; the others are
/// ours.
enum class FtpMethod {
  login = 1,
  logout = 2,
  command = 3,
  currentDirectory = 4,
  changeToParent = 5,
  list = 6,
  getFile = 14
};

/// Encryption; the numbers are those stored in a profile.
enum class FtpSecurity {
  none = 0,
  explicitTls = 1,  // AUTH TLS on an unencrypted control connection (RFC 4217), before USER
  implicitTls = 2   // TLS from the first byte, usually on port 990
};

enum class FtpStatus { done = 0, inProgress = 1, failed = 2 };

/// Proxy types; the numbers are those stored in a profile. From siteHostname on the proxy speaks FTP: all
/// connections, data connections too, go to it, and a port other than 21 follows the host.
enum class FtpProxyType {
  none = 0,
  socks4 = 1,  // SOCKS 4; 4a where the host is a name
  socks5 = 2,  // SOCKS 5 (RFC 1928), with a login (RFC 1929) where there is a user name
  siteHostname =
      3,          // USER and PASS of the proxy, "SITE host" or "SITE host port", USER and PASS of the server
  userLogon = 4,  // USER and PASS of the proxy, "USER user@host" or "USER user@host:port", PASS of the server
  userNoLogon = 5,  // "USER user@host" or "USER user@host:port", PASS of the server
  open = 6,         // as siteHostname, with OPEN in place of SITE
  pipe = 7  // the proxy passes all bytes to one server and sends none itself, also called a transparent or
            // plug proxy: the client connects to it as if it were the server
};

/// Numbers of failures without a server reply. A refusal by the server has the reply's own code (421, 530,
/// 550, ...), which is always lower. Where a proxy refused, the description has "the proxy says"; where it
/// was either of them, "The server, or the proxy before it,".
enum class FtpErrorNumber : int {
  notConnected = 1001,
  busy,
  hostNotFound,
  connectFailed,
  connectionLost,
  timedOut,
  aborted,
  badReply,
  badArgument,
  dataConnectionFailed,
  incomplete,
  tooLong,
  localFile,
  proxyRefused,  // by a SOCKS proxy; an FTP proxy's refusal has its reply's code, as a server's does
  tlsFailed,     // no encrypted connection; nothing else was sent
  certificateRejected
};

/// Raised by every operation that fails, after the error event. `what()` is a sentence for the user, with the
/// server's reply where there was one; it never contains a password.
class FtpError : public std::runtime_error {
 public:
  FtpError(int number, const std::string& description) : std::runtime_error(description), number_(number) {}
  FtpError(FtpErrorNumber number, const std::string& description)
      : FtpError(static_cast<int>(number), description) {}
  int number() const { return number_; }

 private:
  int number_;
};

/// A reply: its code and its text as sent, all lines joined by CR LF, without a final line break.
struct FtpReply {
  int code = 0;
  std::string text;

  bool preliminary() const { return code / 100 == 1; }
  bool completion() const { return code / 100 == 2; }
  bool intermediate() const { return code / 100 == 3; }
  bool refusal() const { return code / 100 == 4 || code / 100 == 5; }
};

/// A folder's listing.
struct FtpListing {
  std::string text;  // as received; "" for an empty folder
  /// The server's words, printable, when it said that the listing is incomplete; else "".
  std::string cut;
  /// The request for hidden files failed temporarily, so this listing may lack them.
  bool hiddenFilesMissing = false;
};

/// Progress of an operation. `text` is a server reply with control characters replaced and passwords masked;
/// it ends in CR LF unless empty. `count` and `size` are bytes done and in total (0: unknown) of a transfer,
/// else 0.
struct FtpProgress {
  FtpMethod method = FtpMethod::command;
  FtpStatus status = FtpStatus::inProgress;
  std::string text;
  std::int64_t count = 0;
  std::int64_t size = 0;
};

/// A client for one server at a time.
///
/// Single-threaded. Each operation below "blocking" returns when it is done and calls `pump` at least every
/// 20 ms until then; the pump may read properties and call `abort`, any other operation started from inside
/// it raises `busy`. An operation that fails raises FtpError, after the error event and a progress event with
/// status `failed`; unless said otherwise the session stays connected when the server merely refused, and is
/// closed when the connection was lost, timed out or its replies can no longer be matched to commands.
class FtpClient {
 public:
  FtpClient();
  /// Closes the connection without QUIT.
  ~FtpClient();
  FtpClient(const FtpClient&) = delete;
  FtpClient& operator=(const FtpClient&) = delete;

  // --- properties

  Pump pump;

  /// Timeout in milliseconds of each blocking step: resolving, connecting, receiving a reply, receiving more
  /// data. 0 or less means kDefaultTimeoutMs. Receiving less than a byte per second over this time also times
  /// out.
  std::int32_t timeoutMs = 0;
  static constexpr std::int32_t kDefaultTimeoutMs = 60'000;

  /// The proxy for the next login. Every type but `none` needs host and port; types without a login ignore
  /// the user name and password, and an empty user name skips the login at the proxy.
  std::int32_t proxyType = 0;  // an FtpProxyType
  std::string proxyHost;
  std::int32_t proxyPort = 0;
  std::string proxyUserName;
  std::string proxyPassword;

  /// The encryption of the next login. With TLS, no password and no file is ever sent or received without it:
  /// a server that refuses, and a proxy type that speaks FTP itself, fail the login.
  std::int32_t security = 0;  // an FtpSecurity
  /// The SHA-256 fingerprint, in hexadecimal digits of either case, of a certificate that is accepted
  /// although the system cannot verify it; "" for none.
  std::string certificate;

  bool passive() const;
  /// Raises badArgument unless the state is `closed`: a session keeps its mode.
  void setPassive(bool passive);

  /// Local ports for active data connections: "low:high", or "0" (and "0:0") for any. Anything else raises
  /// badArgument when the next active data connection is opened.
  std::string dataPortRange = "0";

  /// Maximum size of a listing in bytes; a longer one is an error.
  std::size_t maxListingBytes = std::size_t{128} << 20;

  FtpState state() const;
  bool busy() const;

  // --- events (any may be empty)

  std::function<void(int number, const std::string& description)> onError;
  std::function<void(FtpState)> onState;
  std::function<void(const FtpProgress&)> onProgress;

  // --- operations, blocking

  /// Connects and logs in (USER, then PASS and ACCT as the server asks). Closes an open session first. After
  /// a failure the state is `closed`. An unknown proxy type, a proxy without host or port, an unknown
  /// `security` and one that the proxy cannot pass raise badArgument before anything is sent. A certificate
  /// that is neither verified nor accepted raises certificateRejected before a user name is sent; see
  /// `rejectedCertificate`.
  void login(const std::string& host, const std::string& user, const std::string& password,
             const std::string& account, std::int32_t port);

  /// Connects as `login` does, with `security` (none counts as explicitTls) and the proxy, but ends after the
  /// handshake and returns the server's certificate, whether or not it would be accepted.
  TlsCertificate readCertificate(const std::string& host, std::int32_t port);

  /// QUIT; the state is `closed` afterwards even when it raises.
  void logout();

  /// Sends one command line unchanged and returns its final reply; a 4xx or 5xx reply is raised.
  FtpReply command(const std::string& line);

  /// PWD. Doubled quotes become single ones; of a reply without quotes, returns the text up to the first
  /// space; an empty pair of quotes means "/".
  std::string currentRemoteDirectory();
  /// CWD.
  void setCurrentRemoteDirectory(const std::string& path);
  /// CDUP.
  void changeToParent();

  /// Lists the current folder. Asks for hidden files (LIST -a) until the server has shown that it takes the
  /// switch for a name; after a temporary failure only that one listing lacks them.
  FtpListing list();

  /// RETR `remotePath` into `localPath`, replacing it; the file appears complete or not at all. An ASCII
  /// transfer (see `asciiType`) writes the platform's line ends. `listedSize` is the file's size in bytes
  /// from the folder's listing, where known; progress events report it, else the size that the server
  /// announced. When the size differs, or an ASCII transfer has fewer bytes, the server is asked for it
  /// (SIZE, RFC 3659 §4); unless it confirms the size received, `incomplete` is raised and the old file
  /// stays.
  void getFile(const std::string& remotePath, const std::string& localPath,
               std::optional<std::int64_t> listedSize = std::nullopt);

  /// Whether the transfer type is ASCII: the last TYPE A or TYPE I that the server accepted; a session begins
  /// with ASCII (RFC 959 §5.1).
  bool asciiType() const;

  // --- any time

  /// The certificate that the last login was not made with: it raised certificateRejected.
  const std::optional<TlsCertificate>& rejectedCertificate() const;
  /// Whether the server of this session offers TLS (FEAT lists AUTH TLS) and the session does without.
  bool offersTls() const;

  /// Cancels the operation in progress, which then raises `aborted`; a transfer is ended by ABOR and its
  /// unfinished file removed. Without an operation in progress, closes the connection at once. Returns
  /// without waiting.
  void abort();

  /// Sends command lines, and then the request for a data connection if asked, without waiting for replies.
  /// The caller promises that its next operations will send exactly these; they then only read their replies.
  /// Any other operation first discards the outstanding replies. A pure optimisation: never raises, and does
  /// nothing when not connected or when the server does not read ahead. Returns whether the lines were sent.
  /// When only part of a command could be sent, the connection is closed; the next operation then raises
  /// connectionLost.
  bool sendAhead(const std::vector<std::string>& commandLines, bool dataConnection);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quillmoor
