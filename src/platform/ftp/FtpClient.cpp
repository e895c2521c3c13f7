#include "platform/ftp/FtpClient.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "base/Ascii.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/LocalPath.h"
#include "platform/ftp/FtpControl.h"
#include "platform/ftp/FtpSizeCheck.h"
#include "platform/ftp/FtpTransfer.h"
#include "platform/ftp/FtpWording.h"
#include "platform/ftp/NvtText.h"
#include "platform/ftp/ProxyLogin.h"

namespace quillmoor {
namespace {

using std::chrono::milliseconds;

/// Errors after which the server is gone or its replies can no longer be matched to commands.
bool endsSession(int number) {
  switch (static_cast<FtpErrorNumber>(number)) {
    case FtpErrorNumber::connectionLost:
    case FtpErrorNumber::timedOut:
    case FtpErrorNumber::aborted:
    case FtpErrorNumber::badReply:
    case FtpErrorNumber::tooLong:
      return true;
    default:
      return number == 421;
  }
}

std::string oneLine(std::string text, std::size_t longest = 500) {
  for (auto at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at))
    text.replace(at, 2, 1, ' ');
  if (text.size() > longest) {
    text.resize(longest);
    text += "...";
  }
  return text;
}

/// RFC 2389 §3.2: each feature is on a line of its own, after one space. `feature` is in lower case.
bool announces(const FtpReply& features, std::string_view feature) {
  return AsciiLower(features.text).find("\n " + std::string(feature)) != std::string::npos;
}

}  // namespace

class FtpClient::Impl {
 public:
  explicit Impl(FtpClient& client)
      : client_(client), io_(client.pump), control_(io_), transfer_(io_, control_) {
    control_.onStray = [this](const FtpReply& reply) { progress(FtpStatus::inProgress, reply.text); };
  }

  bool passive = true;
  FtpState state = FtpState::closed;
  bool busy = false;
  std::optional<TlsCertificate> rejectedCertificate;

  /// Runs an operation: one at a time, failures reported by events before they are raised, and the session
  /// closed when it is no longer usable.
  template <class Body>
  auto perform(FtpMethod method, bool needsSession, Body body) {
    if (busy) raiseOutside(FtpErrorNumber::busy, "Another operation of this FTP client is in progress.");
    if (needsSession && state != FtpState::connected) {
      raiseOutside(FtpErrorNumber::notConnected, "Not connected to an FTP server.");
    }
    struct Busy {
      Impl& impl;
      explicit Busy(Impl& i) : impl(i) { impl.busy = true; }
      ~Busy() { impl.busy = false; }
    } const flag{*this};
    io_.clearAbort();
    method_ = method;
    try {
      return body();
    } catch (const Aborted&) {
      closeUnlessTransfer(method);
      fail(FtpError(FtpErrorNumber::aborted, "The operation was stopped."), "");
    } catch (const FtpRefusal& error) {
      if (endsSession(error.number())) control_.close();
      fail(error, error.reply().text);
    } catch (const FtpError& error) {
      // A transfer has already closed its control connection unless it ended cleanly.
      if (endsSession(error.number())) closeUnlessTransfer(method);
      fail(error, "");
    } catch (const std::system_error& error) {
      fail(FtpError(FtpErrorNumber::localFile, printableReply(error.what(), "") + "."), "");
    }
  }

  void login(const std::string& host, const std::string& user, const std::string& password,
             const std::string& account, std::int32_t port);
  void logout();
  FtpReply command(const std::string& line);
  std::string currentDirectory();
  void simple(const std::string& line);
  FtpListing list();
  void getFile(const std::string& remotePath, const std::string& localPath,
               std::optional<std::int64_t> listedSize);
  TlsCertificate readCertificate(const std::string& host, std::int32_t port);
  bool asciiType() const { return control_.asciiType(); }
  bool offersTls() const { return offersTls_ && state == FtpState::connected; }
  void abort();
  bool sendAhead(std::vector<std::string> lines, bool dataConnection);

 private:
  milliseconds timeout() const {
    return milliseconds(client_.timeoutMs > 0 ? client_.timeoutMs : kDefaultTimeoutMs);
  }
  void setState(FtpState next);
  void closeNow();
  void closeUnlessTransfer(FtpMethod method) {
    if (method != FtpMethod::list && method != FtpMethod::getFile) control_.close();
  }
  void progress(FtpStatus status, const std::string& replyText, std::int64_t count = 0,
                std::int64_t size = 0);
  FtpReply require(const std::string& line);
  std::string shown(const std::string& replyText) const {
    return printableReply(printableReply(replyText, secret_), proxySecret_);
  }
  void negotiateNames();
  FtpLogin connect(const std::string& host, std::int32_t port, std::int32_t security);
  FtpTransfer::Outcome runList(const std::string& command, std::string& text);
  [[noreturn]] void fail(const FtpError& error, const std::string& replyText);
  [[noreturn]] void raiseOutside(FtpErrorNumber number, const char* description);

  FtpClient& client_;
  PumpedIo io_;
  FtpControl control_;
  FtpTransfer transfer_;
  FtpMethod method_ = FtpMethod::command;
  std::string secret_, proxySecret_;
  bool offersTls_ = false;
  enum class HiddenFiles { unknown, listed, refused } hiddenFiles_ = HiddenFiles::unknown;
};

void FtpClient::Impl::setState(FtpState next) {
  if (state == next) return;
  state = next;
  if (client_.onState) client_.onState(next);
}

/// Closes both connections without QUIT.
void FtpClient::Impl::closeNow() {
  transfer_.reset(passive);
  control_.close();
  if (state == FtpState::connected) setState(FtpState::closing);
  setState(FtpState::closed);
}

void FtpClient::Impl::progress(FtpStatus status, const std::string& replyText, std::int64_t count,
                               std::int64_t size) {
  if (!client_.onProgress) return;
  std::string text = replyText.empty() ? std::string() : shown(replyText) + "\r\n";
  client_.onProgress({method_, status, std::move(text), count, size});
}

void FtpClient::Impl::fail(const FtpError& error, const std::string& replyText) {
  if (state != FtpState::closed && !control_.isOpen()) closeNow();
  // The user needs every word about a certificate to decide on it; none of its texts is long.
  const bool aboutCertificate = error.number() == static_cast<int>(FtpErrorNumber::certificateRejected);
  const FtpError reported(
      error.number(), aboutCertificate ? oneLine(shown(error.what()), 2000) : oneLine(shown(error.what())));
  if (client_.onError) client_.onError(reported.number(), reported.what());
  progress(FtpStatus::failed, replyText.empty() ? reported.what() : replyText);
  throw reported;
}

/// For an operation that was never started: must not affect the one in progress.
void FtpClient::Impl::raiseOutside(FtpErrorNumber number, const char* description) {
  if (client_.onError) client_.onError(static_cast<int>(number), description);
  throw FtpError(number, description);
}

FtpReply FtpClient::Impl::require(const std::string& line) {
  FtpReply reply = control_.exchange(line, timeout());
  if (reply.refusal()) control_.raiseRefused(line, reply);
  return reply;
}

void FtpClient::Impl::login(const std::string& host, const std::string& user, const std::string& password,
                            const std::string& account, std::int32_t port) {
  perform(FtpMethod::login, false, [&] {
    if (state != FtpState::closed) closeNow();
    secret_ = password;
    try {
      FtpLogin login = connect(host, port, client_.security);
      login.userName = user;
      login.password = password;
      login.account = account;
      const FtpReply reply = logInAtServer(control_, login, timeout(), [this](const FtpReply& before) {
        progress(FtpStatus::inProgress, before.text);
      });
      negotiateNames();
      setState(FtpState::connected);
      progress(FtpStatus::done, reply.text);
    } catch (const FtpError& error) {
      if (error.number() == static_cast<int>(FtpErrorNumber::certificateRejected))
        rejectedCertificate = control_.tls()->certificate();
      control_.close();
      throw;
    } catch (...) {
      control_.close();
      throw;
    }
  });
}

/// Connects to the server or to the proxy before it; returns what is known of the login.
FtpLogin FtpClient::Impl::connect(const std::string& host, std::int32_t port, std::int32_t security) {
  rejectedCertificate.reset();
  offersTls_ = false;
  proxySecret_ = client_.proxyPassword;
  FtpLogin login;
  login.proxy = checkedProxy(client_.proxyType, client_.proxyHost, client_.proxyPort, client_.proxyUserName,
                             client_.proxyPassword);
  login.security = checkedSecurity(security, login.proxy.type);
  login.certificate = client_.certificate;
  if (port < 1 || port > 65535) {
    throw FtpError(FtpErrorNumber::badArgument, std::to_string(port) + " is not a valid port number.");
  }
  login.server = {host, static_cast<std::uint16_t>(port)};
  setState(FtpState::connecting);
  transfer_.reset(passive, connectControl(io_, control_, login.server, login.proxy, timeout()));
  hiddenFiles_ = HiddenFiles::unknown;
  return login;
}

TlsCertificate FtpClient::Impl::readCertificate(const std::string& host, std::int32_t port) {
  return perform(FtpMethod::login, false, [&] {
    if (state != FtpState::closed) closeNow();
    struct Close {
      Impl& impl;
      ~Close() { impl.control_.close(); }
    } const close{*this};
    const bool plain = client_.security == static_cast<std::int32_t>(FtpSecurity::none);
    const FtpLogin login =
        connect(host, port, plain ? static_cast<std::int32_t>(FtpSecurity::explicitTls) : client_.security);
    try {
      beginSession(control_, login, timeout(), [](const FtpReply&) {});
    } catch (const FtpError& error) {
      if (error.number() != static_cast<int>(FtpErrorNumber::certificateRejected)) throw;
    }
    TlsCertificate certificate = *control_.tls()->certificate();
    closeNow();
    return certificate;
  });
}

/// RFC 2640, RFC 2389: some servers send UTF-8 names only when asked to. Whatever they reply, the session
/// goes on.
void FtpClient::Impl::negotiateNames() {
  const FtpReply features = control_.exchange("FEAT", timeout());
  offersTls_ = !control_.tls() && announces(features, "auth tls");
  if (announces(features, "utf8")) control_.exchange("OPTS UTF8 ON", timeout());
}

void FtpClient::Impl::logout() {
  perform(FtpMethod::logout, true, [&] {
    setState(FtpState::closing);
    struct Close {
      Impl& impl;
      ~Close() { impl.closeNow(); }
    } const close{*this};
    const FtpReply reply = require("QUIT");
    progress(FtpStatus::done, reply.text);
  });
}

FtpReply FtpClient::Impl::command(const std::string& line) {
  return perform(FtpMethod::command, true, [&] {
    FtpReply reply = require(line);
    progress(FtpStatus::done, reply.text);
    return reply;
  });
}

std::string FtpClient::Impl::currentDirectory() {
  return perform(FtpMethod::currentDirectory, true, [&] {
    const FtpReply reply = require("PWD");
    // Any other code answers another command: replies and commands no longer match.
    auto path = reply.code == 257 ? pwdPath(reply.text) : std::nullopt;
    if (!path) throw FtpError(FtpErrorNumber::badReply, "The server's reply names no folder: " + reply.text);
    progress(FtpStatus::done, reply.text);
    return *std::move(path);
  });
}

void FtpClient::Impl::simple(const std::string& line) {
  const FtpReply reply = require(line);
  progress(FtpStatus::done, reply.text);
}

FtpTransfer::Outcome FtpClient::Impl::runList(const std::string& command, std::string& text) {
  text.clear();
  FtpTransfer::Order order;
  order.command = command;
  order.timeout = timeout();
  order.dataPortRange = client_.dataPortRange;
  order.sink = [&](char* data, std::size_t size) {
    if (text.size() + size > client_.maxListingBytes) {
      throw FtpError(FtpErrorNumber::tooLong,
                     "The listing is longer than " + std::to_string(client_.maxListingBytes) + " bytes.");
    }
    text.append(data, size);
  };
  return transfer_.run(order);
}

FtpListing FtpClient::Impl::list() {
  return perform(FtpMethod::list, true, [&] {
    FtpListing listing;
    std::string& text = listing.text;
    FtpTransfer::Outcome outcome;
    bool plain = hiddenFiles_ == HiddenFiles::refused, takenForName = plain;
    if (!plain) {
      outcome = runList("LIST -a", text);
      // A server that takes the switch for a name refuses it or lists nothing. So does an empty folder,
      // unless the switch is known to work.
      if (outcome.reply.completion() && !text.empty()) hiddenFiles_ = HiddenFiles::listed;
      plain = hiddenFiles_ == HiddenFiles::unknown;
      // Other failures are temporary (a broken data connection, a busy server) and say nothing about the
      // switch.
      takenForName =
          outcome.reply.completion() || outcome.reply.code / 100 == 5 || saysFolderIsEmpty(outcome.reply);
    }
    if (plain) {
      listing.hiddenFilesMissing = !takenForName;
      outcome = runList("LIST", text);
      if (takenForName && outcome.reply.completion() && !text.empty()) hiddenFiles_ = HiddenFiles::refused;
    }
    if (outcome.reply.refusal()) {
      if (!saysFolderIsEmpty(outcome.reply)) control_.raiseRefused("LIST", outcome.reply);
      text.clear();
    } else {
      listing.cut = oneLine(shown(listingCut(outcome.reply.text)));
    }
    progress(FtpStatus::done, outcome.reply.text, outcome.count, outcome.count);
    if (!control_.isOpen()) closeNow();
    return listing;
  });
}

void FtpClient::Impl::getFile(const std::string& remotePath, const std::string& localPath,
                              std::optional<std::int64_t> listedSize) {
  perform(FtpMethod::getFile, true, [&] {
    AtomicFile file(localPath);
    NvtText text(platformLineEnd());
    FtpTransfer::Order order;
    order.command = "RETR " + remotePath;
    order.timeout = timeout();
    order.dataPortRange = client_.dataPortRange;
    order.exactSize = !asciiType();
    order.listedSize = listedSize;
    if (asciiType()) {
      order.sink = [&](char* data, std::size_t size) {
        const auto converted = text.convert(data, size);
        file.write(std::string_view(converted.data, converted.size));
      };
    } else {
      order.sink = [&](char* data, std::size_t size) { file.write(std::string_view(data, size)); };
    }
    order.progress = [&](std::int64_t count, std::int64_t size) {
      progress(FtpStatus::inProgress, "", count, listedSize.value_or(0) > 0 ? *listedSize : size);
    };
    // Encrypted servers take nothing while they send a file, so the next file's commands go out at its end.
    // Most often they are the same ones.
    if (control_.tls() && passive) {
      order.onDataEnd = [&] {
        if (auto request = transfer_.requestAhead(client_.dataPortRange))
          control_.sendGuessAhead({asciiType() ? "TYPE A" : "TYPE I", *std::move(request)});
      };
    }
    FtpTransfer::Outcome outcome;
    control_.withEitherForm(order.command, [&] {
      if (outcome.count == 0) outcome = transfer_.run(order);
      return outcome.reply;
    });
    if (outcome.reply.refusal()) control_.raiseRefused("RETR", outcome.reply);
    RequireWholeFile(control_, {remotePath, outcome.count, listedSize, outcome.announced}, timeout());
    if (text.heldCarriageReturn()) file.write("\r");
    file.commit();
    progress(FtpStatus::done, outcome.reply.text, outcome.count, outcome.count);
    if (!control_.isOpen()) closeNow();
  });
}

void FtpClient::Impl::abort() {
  if (busy) {
    io_.requestAbort();
  } else if (state != FtpState::closed) {
    closeNow();
  }
}

bool FtpClient::Impl::sendAhead(std::vector<std::string> lines, bool dataConnection) {
  if (busy || state != FtpState::connected || !control_.takesCommandsAhead()) return false;
  io_.clearAbort();
  try {
    if (dataConnection) {
      if (auto request = transfer_.requestAhead(client_.dataPortRange)) lines.push_back(*std::move(request));
    }
    return control_.sendAhead(lines);
  } catch (const FtpError&) {
    return false;  // the operation itself will fail the same way and report it
  }
}

FtpClient::FtpClient() : impl_(std::make_unique<Impl>(*this)) {}
FtpClient::~FtpClient() = default;

bool FtpClient::passive() const {
  return impl_->passive;
}
void FtpClient::setPassive(bool passive) {
  if (impl_->state != FtpState::closed) {
    throw FtpError(FtpErrorNumber::badArgument, "The passive mode cannot be changed during a session.");
  }
  impl_->passive = passive;
}
FtpState FtpClient::state() const {
  return impl_->state;
}
bool FtpClient::busy() const {
  return impl_->busy;
}

void FtpClient::login(const std::string& host, const std::string& user, const std::string& password,
                      const std::string& account, std::int32_t port) {
  impl_->login(host, user, password, account, port);
}
TlsCertificate FtpClient::readCertificate(const std::string& host, std::int32_t port) {
  return impl_->readCertificate(host, port);
}
const std::optional<TlsCertificate>& FtpClient::rejectedCertificate() const {
  return impl_->rejectedCertificate;
}
bool FtpClient::offersTls() const {
  return impl_->offersTls();
}
void FtpClient::logout() {
  impl_->logout();
}
FtpReply FtpClient::command(const std::string& line) {
  return impl_->command(line);
}
std::string FtpClient::currentRemoteDirectory() {
  return impl_->currentDirectory();
}
void FtpClient::setCurrentRemoteDirectory(const std::string& path) {
  impl_->perform(FtpMethod::currentDirectory, true, [&] { impl_->simple("CWD " + path); });
}
void FtpClient::changeToParent() {
  impl_->perform(FtpMethod::changeToParent, true, [&] { impl_->simple("CDUP"); });
}
FtpListing FtpClient::list() {
  return impl_->list();
}
void FtpClient::getFile(const std::string& remotePath, const std::string& localPath,
                        std::optional<std::int64_t> listedSize) {
  impl_->getFile(remotePath, localPath, listedSize);
}
bool FtpClient::asciiType() const {
  return impl_->asciiType();
}
void FtpClient::abort() {
  impl_->abort();
}
bool FtpClient::sendAhead(const std::vector<std::string>& commandLines, bool dataConnection) {
  return impl_->sendAhead(commandLines, dataConnection);
}

}  // namespace quillmoor
