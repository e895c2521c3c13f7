// The FTP client: one control connection, one operation at a time, each blocking while it pumps.
//
// Protocol: RFC 959 (FTP), RFC 2428 (EPRT, EPSV), RFC 2389 (FEAT), RFC 2640 (UTF-8 names).
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

namespace quillmoor {

/// Connection states. Only `connected` means logged in.
enum class FtpState { closed = 0, connecting = 1, connected = 2, closing = 3 };

/// What a progress event is about. The value 14, the file transfer, is fixed; the others are ours.
enum class FtpMethod {
  login = 1,
  logout = 2,
  command = 3,
  currentDirectory = 4,
  changeToParent = 5,
  list = 6,
  getFile = 14
};

enum class FtpStatus { done = 0, inProgress = 1, failed = 2 };

/// Ways through a proxy; the numbers are those stored in a profile. From siteHostname on the proxy speaks
/// FTP: all connections, for data too, lead to it, and a port other than 21 is told to it behind the host.
enum class FtpProxyType {
  none = 0,
  socks4 = 1,  // SOCKS 4; 4a where the host is a name
  socks5 = 2,  // SOCKS 5 (RFC 1928), with a login (RFC 1929) where there is a user name
  siteHostname =
      3,          // USER and PASS of the proxy, "SITE host" or "SITE host port", USER and PASS of the server
  userLogon = 4,  // USER and PASS of the proxy, "USER user@host" or "USER user@host:port", PASS of the server
  userNoLogon = 5,  // "USER user@host" or "USER user@host:port", PASS of the server
  open = 6,         // as siteHostname, with OPEN in place of SITE
  pipe = 7          // the proxy is a pipe to one server and says nothing itself, also called a transparent or
                    // plug proxy: the client connects to it and talks as if to the server
};

/// Numbers of the failures that no server reply names. A refusal by the server bears the reply's own code
/// (421, 530, 550, ...), which is always below these. Where a proxy refused, the description has "the proxy
/// says"; where that or the server may have, "The server, or the proxy before it,".
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
  proxyRefused  // by SOCKS; an FTP proxy's refusal bears the reply's code as a server's does
};

/// Raised by every operation that fails, after the error event. `what()` is a sentence for a person and holds
/// the server's reply where there was one; it never holds a password.
class FtpError : public std::runtime_error {
 public:
  FtpError(int number, const std::string& description) : std::runtime_error(description), number_(number) {}
  FtpError(FtpErrorNumber number, const std::string& description)
      : FtpError(static_cast<int>(number), description) {}
  int number() const { return number_; }

 private:
  int number_;
};

/// A final reply: its code and its text as sent, all lines joined by CR LF, without a last line break.
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
  /// Where the server said that the listing does not hold all there is: its words, fit to be shown; else "".
  std::string cut;
  /// The server failed for the moment when it was asked for hidden files too, so this listing may lack them.
  bool hiddenFilesMissing = false;
};

/// Progress of a method. `text` ends in CR LF unless empty; it holds a server reply with control characters
/// replaced and passwords blotted out. `count` and `size` are bytes done and in all (0: not known) of a
/// transfer, else 0.
struct FtpProgress {
  FtpMethod method = FtpMethod::command;
  FtpStatus status = FtpStatus::inProgress;
  std::string text;
  std::int64_t count = 0;
  std::int64_t size = 0;
};

/// A client for one server at a time.
///
/// All on one thread. Each operation below "blocking" returns when it is done and calls `pump` at least every
/// 20 ms until then; the pump may read properties and call `abort`, any other operation started from inside
/// it raises `busy`. An operation that fails raises FtpError, after the error event and a progress event with
/// status `failed`; unless said otherwise the session stays connected when the server merely refused, and is
/// closed when the connection was lost, timed out or can no longer be trusted to answer in order.
class FtpClient {
 public:
  FtpClient();
  /// Closes the connection without a farewell.
  ~FtpClient();
  FtpClient(const FtpClient&) = delete;
  FtpClient& operator=(const FtpClient&) = delete;

  // --- properties

  Pump pump;

  /// Longest time, in milliseconds, that one blocking step may take: to resolve, to connect, to get a reply,
  /// to get more data. 0 or less means kDefaultTimeoutMs. Data arriving slower than a byte a second over
  /// such a time counts as none.
  std::int32_t timeoutMs = 0;
  static constexpr std::int32_t kDefaultTimeoutMs = 60'000;

  /// The proxy for the next login. Host and port are needed for every type but `none`; types that know no
  /// login ignore the user name and password, and an empty user name leaves the login at the proxy out.
  std::int32_t proxyType = 0;  // an FtpProxyType
  std::string proxyHost;
  std::int32_t proxyPort = 0;
  std::string proxyUserName;
  std::string proxyPassword;

  bool passive() const;
  /// Raises badArgument while the state is not `closed`: a session keeps the mode it was opened with.
  void setPassive(bool passive);

  /// Local ports for active data connections: "low:high", or "0" (and "0:0") for any. Anything else raises
  /// badArgument when the next active data connection is opened.
  std::string dataPortRange = "0";

  /// Upper bound of one listing in bytes; a longer one is an error.
  std::size_t maxListingBytes = std::size_t{128} << 20;

  FtpState state() const;
  bool busy() const;

  // --- events (any may be empty)

  std::function<void(int number, const std::string& description)> onError;
  std::function<void(FtpState)> onState;
  std::function<void(const FtpProgress&)> onProgress;

  // --- operations, blocking

  /// Connects and logs in (USER, then PASS and ACCT as the server asks). A session that is still open is
  /// closed first. After a failure the state is `closed`. A proxy type that is none, or a proxy without a
  /// host or port, raises badArgument before anything is sent.
  void login(const std::string& host, const std::string& user, const std::string& password,
             const std::string& account, std::int32_t port);

  /// QUIT; the state is `closed` afterwards even when it raises.
  void logout();

  /// Sends one command line as it stands and returns its final reply; a reply of 4xx or 5xx is raised.
  FtpReply command(const std::string& line);

  /// PWD. Undoubles quotes; a reply without quotes gives the text up to the first blank, an empty pair "/".
  std::string currentRemoteDirectory();
  /// CWD.
  void setCurrentRemoteDirectory(const std::string& path);
  /// CDUP.
  void changeToParent();

  /// Lists the current folder. Asks for hidden files (LIST -a) until the server has shown that it takes the
  /// switch for a name; a failure that may pass is no such sign, but costs them in that one listing.
  FtpListing list();

  /// RETR `remotePath` into `localPath`, replacing it; the file appears whole or not at all. In an ASCII
  /// transfer (see `asciiType`) lines end the platform's way. `listedSize` is the file's size in bytes in the
  /// folder's listing, where known: progress events give it, else the size that the server mentions. A file
  /// whose size is another one, or an ASCII transfer of fewer bytes, is asked about (SIZE, RFC 3659 §4);
  /// unless the server says that what has come is all, it raises `incomplete` and the old file stays.
  void getFile(const std::string& remotePath, const std::string& localPath,
               std::optional<std::int64_t> listedSize = std::nullopt);

  /// Whether the type in force is ASCII: the last TYPE A or TYPE I that the server has accepted; a session
  /// begins with ASCII (RFC 959 §5.1).
  bool asciiType() const;

  // --- any time

  /// Cancels the operation in progress, which then raises `aborted`; a transfer is ended with ABOR and its
  /// unfinished file removed. With no operation in progress it closes the connection at once. Returns
  /// without waiting.
  void abort();

  /// Sends command lines, and then the request for a data connection if asked, without waiting for replies:
  /// the caller's promise that its next operations will send just these. Each such operation then only
  /// takes its reply; any other operation first lets the outstanding replies pass. Changes nothing but
  /// time: never raises, and does nothing when not connected or when the server does not read ahead. Whether
  /// they were sent. Only where half a command went out, and the network took no more, is the connection
  /// given up; the next operation then raises connectionLost, as after a loss at any other time.
  bool sendAhead(const std::vector<std::string>& commandLines, bool dataConnection);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quillmoor
