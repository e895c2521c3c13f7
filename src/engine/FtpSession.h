// The FTP session of a run: applies the profile's settings to the client, logs in, and logs the client's
// events.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/NetworkWait.h"
#include "engine/RunLog.h"
#include "engine/RunServices.h"
#include "engine/RunState.h"
#include "platform/ftp/FtpClient.h"

namespace quillmoor {

class FtpSession {
 public:
  /// All arguments must outlive this.
  FtpSession(const RunServices& services, RunState& state, RunLog& log, NetworkWait& network);
  FtpSession(const FtpSession&) = delete;
  FtpSession& operator=(const FtpSession&) = delete;

  FtpState state() const { return client_.state(); }
  /// The one test for an open session.
  bool connected() const { return client_.state() == FtpState::connected; }

  /// Applies the profile's connection settings to the client. An open session keeps its passive mode. Raises
  /// std::overflow_error, with nothing set, when the time-out is too large.
  void SetFtpProperties();

  /// Returns at once when connected. Otherwise logs in, retrying until success, a Stop, or the limit set by
  /// LoginAttempts, or a certificate that is not trusted (the last two set RunState::loginGivenUp, and later
  /// calls do nothing); in dial-up mode it dials first. Does nothing when re-entered. The outcome is
  /// `connected` and RunState::LoggedIn.
  void ConnectAndLogin();

  /// Logs out (QUIT); errors are swallowed.
  void Logout();

  /// For a confirmed Stop: aborts the operation in progress, or closes an idle session.
  void abort() { client_.abort(); }

  /// Closes the session, if open, without QUIT. For the end of a profile.
  void close();

  // The client's operations; each raises FtpError. They set RunState::ExpectedMethod.
  void command(const std::string& line);
  std::string currentRemoteDirectory();
  void setCurrentRemoteDirectory(const std::string& path);
  FtpListing list();
  void getFile(const std::string& remotePath, const std::string& localPath,
               std::optional<std::int64_t> listedSize);
  bool asciiType() const { return client_.asciiType(); }
  /// Saves round trips; the next operations must send exactly these commands.
  void sendAhead(const std::vector<std::string>& commandLines, bool dataConnection);

  /// While one exists, replies and errors are not logged; changes of the connection's state are.
  class LogSuppressor {
   public:
    explicit LogSuppressor(FtpSession& session)
        : logSuppressed_(session.logSuppressed_), before_(session.logSuppressed_) {
      logSuppressed_ = true;
    }
    ~LogSuppressor() { logSuppressed_ = before_; }
    LogSuppressor(const LogSuppressor&) = delete;
    LogSuppressor& operator=(const LogSuppressor&) = delete;

   private:
    bool& logSuppressed_;
    bool before_;
  };

 private:
  void TryLogin();
  void loginOverLan();
  void loginOverDialUp();
  bool mayTryAgain(std::int32_t attempts);
  std::int32_t pauseFactor(std::int32_t attempts) const;
  void noteRefusedLogin();
  void enterDefaultDir();
  void expect(FtpMethod method);

  void showError(int number, const std::string& description);
  void showState(FtpState state);
  void showProgress(const FtpProgress& progress);
  void showTransfer(std::int64_t count, std::int64_t size);

  const RunServices& services_;
  RunState& state_;
  RunLog& log_;
  NetworkWait& network_;
  FtpClient client_;
  bool logSuppressed_ = false;
  int errorNumber_ = 0;  // of the client's last error event
};

}  // namespace quillmoor
