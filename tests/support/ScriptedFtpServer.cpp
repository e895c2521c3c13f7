#include "support/ScriptedFtpServer.h"

#include <algorithm>
#include <asio.hpp>
#include <cstdio>
#include <stdexcept>
#include <utility>

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

/// All that is open, on the server's thread. An operation blocks until it is done; the server's end closes
/// everything, which ends the operation in progress and lets every later one fail.
class ScriptedFtpServer::Sockets {
 public:
  explicit Sockets(bool ipv6) : listener(context), dataPort(context), control(context), data(context) {
    here = ipv6 ? asio::ip::address(asio::ip::address_v6::loopback()) : asio::ip::address_v4::loopback();
    listenOn(listener);
  }

  std::uint16_t listenOn(tcp::acceptor& acceptor) {
    acceptor = tcp::acceptor(context, {here, 0});
    return acceptor.local_endpoint().port();
  }
  /// False when the operation failed. `start` begins it with the handler that it is handed.
  template <class Start>
  bool wait(Start start) {
    bool done = false, succeeded = false;
    start([&](const asio::error_code& error, auto...) {
      done = true;
      succeeded = !error;
    });
    for (context.restart(); !done;) context.run_one();
    return succeeded;
  }
  bool accept(tcp::acceptor& acceptor, tcp::socket& socket) {
    return wait([&](auto then) { acceptor.async_accept(socket, then); });
  }
  bool send(tcp::socket& socket, std::string_view bytes) {
    return wait([&](auto then) { asio::async_write(socket, asio::buffer(bytes), then); });
  }
  template <class Socket>
  static void close(Socket& socket) {
    asio::error_code ignored;
    socket.close(ignored);
  }
  /// From the thread that ends the server.
  void end() {
    asio::post(context, [this] {
      over = true;
      close(listener);
      close(dataPort);
      close(control);
      close(data);
    });
  }

  asio::io_context context;
  asio::ip::address here;
  tcp::acceptor listener, dataPort;
  tcp::socket control, data;
  bool over = false;
};

ScriptedFtpServer::ScriptedFtpServer(bool ipv6) : sockets_(std::make_unique<Sockets>(ipv6)) {
  folders_["/"];
  port_ = sockets_->listener.local_endpoint().port();
  thread_ = std::thread([this] { serve(); });
}

ScriptedFtpServer::~ScriptedFtpServer() {
  sockets_->end();
  thread_.join();
}

void ScriptedFtpServer::addFolder(const std::string& path) {
  const std::lock_guard lock(mutex_);
  for (std::string folder = path; folder != "/"; folder = parentOf(folder)) folders_[folder];
}

void ScriptedFtpServer::addFile(const std::string& path, std::string bytes, const std::string& date) {
  addFolder(parentOf(path));
  const std::lock_guard lock(mutex_);
  files_[path] = {std::move(bytes), date};
}

void ScriptedFtpServer::addLine(const std::string& folder, const std::string& line) {
  addFolder(folder);
  const std::lock_guard lock(mutex_);
  folders_[folder].push_back(line);
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
  while (!sockets_->over) {
    if (!sockets_->accept(sockets_->listener, sockets_->control)) continue;
    // Replies go out one by one: held back until the one before is acknowledged, each would cost 40 ms.
    asio::error_code ignored;
    sockets_->control.set_option(tcp::no_delay(true), ignored);
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
  const auto line = [&](const char* mode, std::size_t size, const std::string& date,
                        const std::string& path) {
    text += std::string(mode) + "   1 owner    group    " + std::to_string(size) + " " + date + " " +
            path.substr(path.rfind('/') + 1) + "\r\n";
  };
  for (const auto& [path, lines] : folders_) {
    if (path != "/" && parentOf(path) == folder) line("drwxr-xr-x", 4096, "Jan  1  2020", path);
  }
  for (const auto& [path, file] : files_) {
    if (parentOf(path) == folder) line("-rw-r--r--", file.bytes.size(), file.date, path);
  }
  for (const std::string& extra : folders_.at(folder)) text += extra + "\r\n";
  return text;
}

// --- a session

ScriptedFtpServer::Session::Session(ScriptedFtpServer& server)
    : server_(server), sockets_(*server.sockets_) {}

void ScriptedFtpServer::Session::sendControl(std::string_view bytes) {
  if (!sockets_.send(sockets_.control, bytes)) open_ = false;
}

void ScriptedFtpServer::Session::reply(const std::string& text) {
  sendControl(text + "\r\n");
}

void ScriptedFtpServer::Session::drop() {
  closeData();
  closeDataPort();
  Sockets::close(sockets_.control);
  open_ = false;
}

void ScriptedFtpServer::Session::closeData() {
  Sockets::close(sockets_.data);
}
void ScriptedFtpServer::Session::closeDataPort() {
  Sockets::close(sockets_.dataPort);
}

void ScriptedFtpServer::Session::resetData() {
  asio::error_code ignored;
  sockets_.data.set_option(tcp::socket::linger(true, 0), ignored);
  closeData();
}

bool ScriptedFtpServer::Session::sendData(std::string_view bytes) {
  return sockets_.data.is_open() && sockets_.send(sockets_.data, bytes);
}

void ScriptedFtpServer::Session::waitForClient() {
  if (input_.find('\n') != std::string::npos) return;
  sockets_.wait([&](auto then) { sockets_.control.async_wait(tcp::socket::wait_read, then); });
}

bool ScriptedFtpServer::Session::openData() {
  closeData();
  if (activePort_ != 0) {
    const tcp::endpoint client(sockets_.here, std::exchange(activePort_, std::uint16_t{0}));
    if (sockets_.wait([&](auto then) { sockets_.data.async_connect(client, then); })) return true;
    closeData();
    return false;
  }
  if (!sockets_.dataPort.is_open() || !sockets_.accept(sockets_.dataPort, sockets_.data)) return false;
  closeDataPort();
  return true;
}

bool ScriptedFtpServer::Session::nextLine() {
  std::size_t end;
  bool waited = false;
  while ((end = input_.find('\n')) == std::string::npos) {
    const auto more = asio::dynamic_buffer(input_);
    if (!sockets_.wait(
            [&](auto then) { asio::async_read(sockets_.control, more, asio::transfer_at_least(1), then); }))
      return false;
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
  if (verb == "FEAT") return reply(server_.features);
  if (verb == "OPTS" || verb == "NOOP" || verb == "ACCT") return reply("200 Fine.");
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
    std::string target = verb == "CDUP" ? parentOf(folder_) : argument;
    if (!target.starts_with('/')) target = (folder_ == "/" ? "" : folder_) + "/" + target;
    if (target.size() > 1 && target.ends_with('/')) target.pop_back();
    {
      const std::lock_guard lock(server_.mutex_);
      if (!server_.folders_.contains(target)) target.clear();
    }
    if (target.empty()) return reply("550 There is no such folder.");
    folder_ = target;
    return reply("250 Done.");
  }
  if (verb == "EPSV" || verb == "PASV") return listenForData(verb == "EPSV");
  if (verb == "PORT" || verb == "EPRT") return adoptPort(argument);
  if (verb == "LIST") return listFolder();
  if (verb == "RETR") return sendFile();
  if (verb == "SIZE") return tellSize();
  reply("500 What is " + verb + "?");
}

void ScriptedFtpServer::Session::listenForData(bool extended) {
  const std::uint16_t port = sockets_.listenOn(sockets_.dataPort);
  if (extended) return reply("229 Come in (|||" + std::to_string(port) + "|)");
  reply("227 Come in (192,0,2,1," + std::to_string(port / 256) + "," + std::to_string(port % 256) + ")");
}

/// Of "127,0,0,1,19,136" or "|2|::1|5000|" the port; the client is on this machine.
void ScriptedFtpServer::Session::adoptPort(const std::string& text) {
  unsigned high = 0, low = 0;
  if (std::sscanf(text.c_str(), "|%*d|%*[^|]|%u", &low) != 1)
    std::sscanf(text.c_str(), "127,0,0,1,%u,%u", &high, &low);
  activePort_ = static_cast<std::uint16_t>(high * 256 + low);
  reply("200 Port taken.");
}

void ScriptedFtpServer::Session::listFolder() {
  if (!openData()) return reply("425 Cannot open the data connection.");
  reply("150 Here it comes.");
  sendData(server_.listingOf(folder_));
  closeData();
  reply("226 Listed.");
}

/// The bytes of the file that the command names.
std::optional<std::string> ScriptedFtpServer::Session::bytesOfFile() {
  const std::lock_guard lock(server_.mutex_);
  const std::string path =
      argument.starts_with('/') ? argument : (folder_ == "/" ? "" : folder_) + "/" + argument;
  const auto file = server_.files_.find(path);
  return file == server_.files_.end() ? std::nullopt : std::optional(file->second.bytes);
}

void ScriptedFtpServer::Session::tellSize() {
  if (ascii_) return reply("550 SIZE not allowed in ASCII mode.");
  const auto bytes = bytesOfFile();
  reply(bytes ? "213 " + std::to_string(bytes->size()) : "550 There is no such file.");
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

// --- actions

ScriptedFtpServer::Action replies(const std::string& text) {
  return [=](ScriptedFtpServer::Session& s) { s.reply(text); };
}

ScriptedFtpServer::Action refusesData(const std::string& text) {
  return [=](ScriptedFtpServer::Session& s) {
    s.closeDataPort();
    s.reply(text);
  };
}

ScriptedFtpServer::Action transfers(const std::string& preliminary, const std::string& bytes,
                                    const std::string& final) {
  return [=](ScriptedFtpServer::Session& s) {
    s.openData();
    if (!preliminary.empty()) s.reply(preliminary);
    s.sendData(bytes);
    if (final.empty()) return s.drop();
    s.closeData();
    s.reply(final);
  };
}

ScriptedFtpServer::Action drops() {
  return [](ScriptedFtpServer::Session& s) { s.drop(); };
}

ScriptedFtpServer::Action staysSilent() {
  return [](ScriptedFtpServer::Session& s) { s.waitForClient(); };
}

}  // namespace quillmoor::testing
