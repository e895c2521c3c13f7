#include "support/ScriptedFtpServer.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "support/Sockets.h"
#include "support/TestCertificate.h"

namespace quillmoor::testing {
namespace {

using asio::ip::tcp;

std::string parentOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string withCrLf(const std::string& text) {
  std::string converted;
  for (const char c : text) {
    if (c == '\n') converted += '\r';
    converted += c;
  }
  return converted;
}

}  // namespace

/// All that is open, used by the server's thread.
struct ScriptedFtpServer::Connections : Sockets {
  asio::ip::address here;
  tcp::acceptor dataPort{context};
  tcp::socket control{context}, data{context};

  using Encrypted = asio::ssl::stream<tcp::socket&>;
  std::unique_ptr<TestCertificate> identity, otherIdentity;
  TestCertificate* dataIdentity = nullptr;
  std::unique_ptr<Encrypted> controlTls, dataTls;

  /// Null when the client does not finish the handshake.
  std::unique_ptr<Encrypted> encrypt(tcp::socket& socket, TestCertificate& shown) {
    auto stream = std::make_unique<Encrypted>(socket, shown.context);
    const bool done =
        wait(socket, [&](auto then) { stream->async_handshake(asio::ssl::stream_base::server, then); });
    return done ? std::move(stream) : nullptr;
  }
};

ScriptedFtpServer::ScriptedFtpServer(bool ipv6) : sockets_(std::make_unique<Connections>()) {
  sockets_->here =
      ipv6 ? asio::ip::address(asio::ip::address_v6::loopback()) : asio::ip::address_v4::loopback();
  port_ = sockets_->start(sockets_->here, [this] { serve(); });
}

ScriptedFtpServer::~ScriptedFtpServer() {
  sockets_->stop();
}

void ScriptedFtpServer::offerTls(bool version13) {
  sockets_->identity = std::make_unique<TestCertificate>(version13);
  sockets_->dataIdentity = sockets_->identity.get();
}

std::string ScriptedFtpServer::fingerprint() const {
  return sockets_->identity->fingerprint;
}

void ScriptedFtpServer::addFolder(const std::string& path) {
  const std::lock_guard lock(mutex_);
  for (std::string folder = path; folders_.insert(folder).second;) folder = parentOf(folder);
}

void ScriptedFtpServer::addFile(const std::string& path, std::string bytes) {
  addFolder(parentOf(path));
  const std::lock_guard lock(mutex_);
  files_[path] = std::move(bytes);
}

void ScriptedFtpServer::setListing(const std::string& folder, std::string text) {
  addFolder(folder);
  const std::lock_guard lock(mutex_);
  listings_[folder] = std::move(text);
}

void ScriptedFtpServer::addRule(const std::string& prefix, Action action, int uses) {
  const std::lock_guard lock(mutex_);
  rules_.insert(rules_.begin(), {prefix, std::move(action), uses});
}

void ScriptedFtpServer::forgetRules() {
  const std::lock_guard lock(mutex_);
  rules_.clear();
}

std::vector<std::string> ScriptedFtpServer::commands() const {
  const std::lock_guard lock(mutex_);
  return commands_;
}

std::size_t ScriptedFtpServer::count(std::string_view prefix) const {
  const auto all = commands();
  return static_cast<std::size_t>(
      std::count_if(all.begin(), all.end(), [&](const auto& line) { return line.starts_with(prefix); }));
}

std::size_t ScriptedFtpServer::commandsSentAhead() const {
  const std::lock_guard lock(mutex_);
  return ahead_;
}

void ScriptedFtpServer::serve() {
  while (sockets_->accept(sockets_->listener, sockets_->control)) {
    Session session(*this);
    for (perform(session); session.open_ && session.nextLine();) perform(session);
    session.drop();
  }
}

/// Answers the session's line: by the first rule that matches, else as usual.
void ScriptedFtpServer::perform(Session& session) {
  Action action;
  {
    const std::lock_guard lock(mutex_);
    for (Rule& rule : rules_) {
      const bool matches = rule.prefix.empty() ? session.line.empty() : session.line.starts_with(rule.prefix);
      if (!matches || rule.uses == 0) continue;
      if (rule.uses > 0) --rule.uses;
      action = rule.action;
      break;
    }
  }
  action ? action(session) : session.answerAsUsual();
}

std::string ScriptedFtpServer::listingOf(const std::string& folder) const {
  const std::lock_guard lock(mutex_);
  const auto fixed = listings_.find(folder);
  if (fixed != listings_.end()) return fixed->second;
  std::string text;
  const auto line = [&](const char* mode, std::size_t size, const std::string& path) {
    if (path == "/" || parentOf(path) != folder) return;
    text += std::string(mode) + "   1 owner    group    " + std::to_string(size) + " Jan  1  2020 " +
            path.substr(path.rfind('/') + 1) + "\r\n";
  };
  for (const std::string& path : folders_) line("drwxr-xr-x", 4096, path);
  for (const auto& [path, bytes] : files_) line("-rw-r--r--", bytes.size(), path);
  return text;
}

// --- a session

ScriptedFtpServer::Session::Session(ScriptedFtpServer& server)
    : server_(server), sockets_(*server.sockets_) {}

void ScriptedFtpServer::Session::sendControl(std::string_view bytes) {
  const bool sent = sockets_.controlTls ? sockets_.send(*sockets_.controlTls, bytes)
                                        : sockets_.send(sockets_.control, bytes);
  if (!sent) open_ = false;
}

void ScriptedFtpServer::Session::reply(const std::string& text) {
  sendControl(text + "\r\n");
}

void ScriptedFtpServer::Session::drop() {
  closeData();
  closeDataPort();
  sockets_.controlTls.reset();
  sockets_.close(sockets_.control);
  open_ = false;
}

/// Encrypted, waits for the client's closing message, as some servers do before they confirm the transfer.
void ScriptedFtpServer::Session::closeData() {
  if (sockets_.dataTls)
    sockets_.wait(sockets_.data, [&](auto then) { sockets_.dataTls->async_shutdown(then); });
  cutData();
}

void ScriptedFtpServer::Session::cutData() {
  sockets_.dataTls.reset();
  sockets_.close(sockets_.data);
}
void ScriptedFtpServer::Session::closeDataPort() {
  sockets_.close(sockets_.dataPort);
}

void ScriptedFtpServer::Session::resetData() {
  asio::error_code ignored;
  sockets_.data.set_option(tcp::socket::linger(true, 0), ignored);
  closeData();
}

bool ScriptedFtpServer::Session::sendData(std::string_view bytes) {
  if (sockets_.dataTls) return sockets_.send(*sockets_.dataTls, bytes);
  return sockets_.data.is_open() && sockets_.send(sockets_.data, bytes);
}

void ScriptedFtpServer::Session::waitForClient() {
  if (input_.find('\n') == std::string::npos) sockets_.waitForPeer(sockets_.control);
}

bool ScriptedFtpServer::Session::openData() {
  closeData();
  if (activePort_ != 0) {
    const tcp::endpoint client(sockets_.here, std::exchange(activePort_, std::uint16_t{0}));
    const bool connected = sockets_.connect(sockets_.data, client);
    if (!connected) closeData();
    return connected && encryptData();
  }
  if (!sockets_.dataPort.is_open() || !sockets_.accept(sockets_.dataPort, sockets_.data)) return false;
  closeDataPort();
  return encryptData();
}

bool ScriptedFtpServer::Session::encryptData() {
  if (!sockets_.controlTls) return true;
  sockets_.dataTls = sockets_.encrypt(sockets_.data, *sockets_.dataIdentity);
  resumedData_ = sockets_.dataTls && SSL_session_reused(sockets_.dataTls->native_handle()) == 1;
  if (!sockets_.dataTls) closeData();
  return sockets_.dataTls != nullptr;
}

bool ScriptedFtpServer::Session::startTls() {
  input_.clear();
  sockets_.dataIdentity = sockets_.identity.get();
  sockets_.controlTls = sockets_.encrypt(sockets_.control, *sockets_.identity);
  if (!sockets_.controlTls) open_ = false;
  return open_;
}

void ScriptedFtpServer::Session::changeCertificate() {
  sockets_.otherIdentity = std::make_unique<TestCertificate>(true);
  sockets_.dataIdentity = sockets_.otherIdentity.get();
}

void ScriptedFtpServer::Session::renegotiate() {
  SSL_renegotiate(sockets_.controlTls->native_handle());
}

bool ScriptedFtpServer::Session::nextLine() {
  std::size_t end;
  bool waited = false;
  while ((end = input_.find('\n')) == std::string::npos) {
    const bool received = sockets_.controlTls ? sockets_.receive(*sockets_.controlTls, input_)
                                              : sockets_.receive(sockets_.control, input_);
    if (!received) return false;
    waited = true;
  }
  line = input_.substr(0, end);
  input_.erase(0, server_.discards_ ? input_.size() : end + 1);
  if (line.ends_with('\r')) line.pop_back();
  // Telnet's interrupt and data mark stand before ABOR.
  line.erase(0, std::min(line.find_first_not_of("\xFF\xF2\xF4"), line.size()));
  const auto blank = line.find(' ');
  argument = blank == std::string::npos ? "" : line.substr(blank + 1);
  const std::lock_guard lock(server_.mutex_);
  server_.commands_.push_back(line);
  if (!waited) ++server_.ahead_;
  return true;
}

void ScriptedFtpServer::Session::answerAsUsual() {
  const std::string verb = line.substr(0, line.find(' '));
  if (line.empty()) return reply("220 Ready.");
  if (verb == "USER") return reply("331 Password, please.");
  if (verb == "PASS") return reply("230 Logged in.");
  if (verb == "FEAT") return reply("211-Features:\r\n UTF8\r\n EPSV\r\n211 End");
  if (verb == "AUTH" && sockets_.identity) {
    reply("234 Begin.");
    startTls();
    return;
  }
  if (verb == "OPTS" || verb == "NOOP" || verb == "ACCT" || verb == "PBSZ" || verb == "PROT")
    return reply("200 Fine.");
  if (verb == "SYST") return reply("215 UNIX Type: L8");
  if (verb == "ABOR") return reply("226 Nothing is left to abort.");
  if (verb == "QUIT") {
    reply("221 Goodbye.");
    return drop();
  }
  if (verb == "TYPE") {
    ascii_ = argument == "A";
    return reply("200 Type is " + argument + ".");
  }
  if (verb == "PWD") return reply("257 \"" + folder_ + "\" is where you are.");
  if (verb == "CWD" || verb == "CDUP") {
    std::string target = verb == "CDUP" ? parentOf(folder_) : path();
    if (target.size() > 1 && target.ends_with('/')) target.pop_back();
    {
      const std::lock_guard lock(server_.mutex_);
      if (!server_.folders_.contains(target)) target.clear();
    }
    if (target.empty()) return reply("550 There is no such folder.");
    folder_ = target;
    return reply("250 Done.");
  }
  if (verb == "EPSV" || verb == "PASV") {
    const std::uint16_t port = sockets_.listen(sockets_.dataPort, sockets_.here);
    if (verb == "EPSV") return reply("229 Come in (|||" + std::to_string(port) + "|)");
    return reply("227 Come in (192,0,2,1," + std::to_string(port / 256) + "," + std::to_string(port % 256) +
                 ")");
  }
  if (verb == "PORT" ||
      verb == "EPRT") {  // "127,0,0,1,19,136" or "|2|::1|5000|"; the client is on this machine
    unsigned high = 0, low = 0;
    if (std::sscanf(argument.c_str(), "|%*d|%*[^|]|%u", &low) != 1)
      std::sscanf(argument.c_str(), "127,0,0,1,%u,%u", &high, &low);
    activePort_ = static_cast<std::uint16_t>(high * 256 + low);
    return reply("200 Port taken.");
  }
  if (verb == "LIST") {
    if (!openData()) return reply("425 Cannot open the data connection.");
    reply("150 Here it comes.");
    sendData(server_.listingOf(folder_));
    closeData();
    return reply("226 Listed.");
  }
  if (verb == "RETR") return sendFile();
  if (verb == "SIZE" && ascii_) return reply("550 SIZE not allowed in ASCII mode.");
  if (verb == "SIZE") {
    const auto bytes = bytesOfFile();
    return reply(bytes ? "213 " + std::to_string(bytes->size()) : "550 There is no such file.");
  }
  reply("500 What is " + verb + "?");
}

/// The whole path of what the command names.
std::string ScriptedFtpServer::Session::path() const {
  return argument.starts_with('/') ? argument : (folder_ == "/" ? "" : folder_) + "/" + argument;
}

/// The bytes of the file that the command names.
std::optional<std::string> ScriptedFtpServer::Session::bytesOfFile() {
  const std::lock_guard lock(server_.mutex_);
  const auto file = server_.files_.find(path());
  return file == server_.files_.end() ? std::nullopt : std::optional(file->second);
}

void ScriptedFtpServer::Session::sendFile() {
  const auto found = bytesOfFile();
  if (!found) {
    closeDataPort();
    return reply("550 There is no such file.");
  }
  const std::string& bytes = *found;
  if (!openData()) return reply("425 Cannot open the data connection.");
  reply("150 Here it comes (" + std::to_string(bytes.size()) + " bytes).");
  const bool sent = sendData(ascii_ ? withCrLf(bytes) : bytes);
  closeData();
  reply(sent ? "226 Sent." : "426 The data connection was closed.");
}

}  // namespace quillmoor::testing
