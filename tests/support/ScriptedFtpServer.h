// An FTP server for tests: a site in memory, over which single faults can be laid.
//
//   ScriptedFtpServer server;
//   server.addFile("/www/a.txt", "hello\n");
//   server.on("RETR", [](auto& session) { session.reply("550 Gone."); });        // every RETR
//   server.once("PASS", [](auto& session) { session.reply("530 Not today."); });  // the first one only
//
// It runs on a thread of its own and serves one connection after the other. Commands without a rule are
// answered as a correct server would. Like most servers it takes a byte 255 in a name as it is. Its answer to
// PASV names another machine, which a client must ignore.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "TestPlatform.h"

namespace quillmoor::testing {

class ScriptedFtpServer {
  struct Connections;

 public:
  class Session;
  using Action = std::function<void(Session&)>;

  explicit ScriptedFtpServer(bool ipv6 = false);
  ~ScriptedFtpServer();

  std::uint16_t port() const { return port_; }

  // The site. Parent folders are created too; the files are of January 1, 2020.
  void addFolder(const std::string& path);
  void addFile(const std::string& path, std::string bytes);
  /// In place of the listing made from what the folder holds.
  void setListing(const std::string& folder, std::string text);

  /// What to do at a command that begins with `prefix` ("RETR", "RETR /a.txt", "" for the greeting). Later
  /// rules come before earlier ones.
  void on(const std::string& prefix, Action action) { addRule(prefix, std::move(action), -1); }
  void once(const std::string& prefix, Action action) { addRule(prefix, std::move(action), 1); }
  void forgetRules();

  /// Encrypts when asked to (AUTH TLS, then all data), with a self-signed certificate of its own.
  void offerTls(bool version13 = true);
  /// Its SHA-256 fingerprint.
  std::string fingerprint() const;

  /// Discards what arrives after a command in the same packet, as some embedded servers do.
  void discardInputBehindCommands() { discards_ = true; }

  /// Every command line received, in order; passwords too.
  std::vector<std::string> commands() const;
  std::size_t count(std::string_view prefix) const;
  /// Command lines that had arrived before the reply to the one before was sent.
  std::size_t commandsSentAhead() const;

  /// What a rule works with: one client's connections.
  class Session {
   public:
    /// Sends one reply; "\r\n" is added.
    void reply(const std::string& text);
    /// Sends bytes over the control connection.
    void sendControl(std::string_view bytes);
    /// The answer that would have been given without the rule.
    void answerAsUsual();
    /// Closes the control connection (and the data connection) at once.
    void drop();
    /// Whether all that was sent has gone out.
    bool isOpen() const { return open_; }

    /// Opens the data connection that the client has asked for; false when it cannot be.
    bool openData();
    /// False when the client has closed it.
    bool sendData(std::string_view bytes);
    void closeData();
    /// Closes it without the closing message of TLS.
    void cutData();
    /// Breaks it off, so that the client sees a reset.
    void resetData();
    /// Closes the port that the last EPSV or PASV named.
    void closeDataPort();
    /// Encrypts the control connection; false when the client does not want to.
    bool startTls();
    /// From now on data connections show another certificate, and resume nothing.
    void changeCertificate();
    /// Asks the client to negotiate again (TLS 1.2).
    void renegotiate();
    /// Whether the last data connection resumed a TLS session.
    bool resumedData() const { return resumedData_; }

    /// Until the client closes the control connection or sends something; what it sends is the next command.
    void waitForClient();

    /// The command line being answered, and what follows its first blank.
    std::string line, argument;

   private:
    friend class ScriptedFtpServer;
    explicit Session(ScriptedFtpServer& server);

    bool nextLine();
    bool encryptData();
    std::string path() const;
    std::optional<std::string> bytesOfFile();
    void sendFile();

    ScriptedFtpServer& server_;
    Connections& sockets_;
    std::uint16_t activePort_ = 0;
    std::string input_, folder_ = "/";
    bool ascii_ = true, open_ = true, resumedData_ = false;
  };

 private:
  struct Rule {
    std::string prefix;
    Action action;
    int uses;  // -1: without end
  };

  void addRule(const std::string& prefix, Action action, int uses);
  void serve();
  void perform(Session& session);
  std::string listingOf(const std::string& folder) const;

  mutable std::mutex mutex_;
  std::vector<Rule> rules_;
  std::map<std::string, std::string> files_;
  std::set<std::string> folders_{"/"};
  std::map<std::string, std::string> listings_;
  std::vector<std::string> commands_;
  std::size_t ahead_ = 0;
  bool discards_ = false;
  std::unique_ptr<Connections> sockets_;
  std::uint16_t port_ = 0;
};

// Actions for rules.

/// One reply and nothing else.
inline ScriptedFtpServer::Action replies(const std::string& text) {
  return [=](auto& session) { session.reply(text); };
}

/// Refuses a transfer: the data port that was asked for is closed.
inline ScriptedFtpServer::Action refusesData(const std::string& text) {
  return [=](auto& session) {
    session.closeDataPort();
    session.reply(text);
  };
}

/// A transfer: the preliminary reply (an empty one is left out), bytes, the end of the data, the final reply.
/// Without a final reply the control connection is dropped where the data should end.
inline ScriptedFtpServer::Action transfers(const std::string& preliminary, const std::string& bytes,
                                           const std::string& final) {
  return [=](auto& session) {
    session.openData();
    if (!preliminary.empty()) session.reply(preliminary);
    session.sendData(bytes);
    if (final.empty()) return session.drop();
    session.closeData();
    session.reply(final);
  };
}

inline ScriptedFtpServer::Action drops() {
  return [](auto& session) { session.drop(); };
}

/// No answer until the client does something.
inline ScriptedFtpServer::Action staysSilent() {
  return [](auto& session) { session.waitForClient(); };
}

}  // namespace quillmoor::testing
