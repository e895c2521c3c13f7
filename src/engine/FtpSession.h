// The FTP session of a run: the client with the profile's settings on it, its logins, and its events in the
// log.
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
  /// All must outlive this.
  FtpSession(const RunServices& services, RunState& state, RunLog& log, NetworkWait& network);
  FtpSession(const FtpSession&) = delete;
  FtpSession& operator=(const FtpSession&) = delete;

  FtpState state() const { return client_.state(); }
  /// Every decision about the session is taken on this.
  bool connected() const { return client_.state() == FtpState::connected; }

  /// Puts the profile's connection settings on the client. A session keeps the passive mode that it was
  /// opened with. Raises std::overflow_error, with nothing set, when the time-out is too large.
  void SetFtpProperties();

  /// Returns at once while connected. Else logs in, retrying until it has worked, a Stop, or as often as the
  /// setting LoginAttempts allows (then RunState::loginGivenUp is set and no later call tries again); in
  /// dial-up mode dials as well. Does nothing when entered again from inside itself. Judge the outcome by
  /// `connected` and RunState::LoggedIn.
  void ConnectAndLogin();

  /// Says goodbye; errors are swallowed.
  void Logout();

  /// A confirmed Stop: ends what is in progress, closes a session that is idle.
  void abort() { client_.abort(); }

  /// Closes the session without a farewell, if it is open. For a profile that is left.
  void close();

  // The operations of the client, each raising FtpError. They note what they await in RunState.
  void command(const std::string& line);
  std::string currentRemoteDirectory();
  void setCurrentRemoteDirectory(const std::string& path);
  FtpListing list();
  void getFile(const std::string& remotePath, const std::string& localPath,
               std::optional<std::int64_t> listedSize);
  bool asciiType() const { return client_.asciiType(); }
  /// A hint that saves round trips: the next operations will send just these.
  void sendAhead(const std::vector<std::string>& commandLines, bool dataConnection);

  /// While one exists, replies and errors are not written; what becomes of the connection is.
  class Mute {
   public:
    explicit Mute(FtpSession& session) : muted_(session.muted_), before_(session.muted_) { muted_ = true; }
    ~Mute() { muted_ = before_; }
    Mute(const Mute&) = delete;
    Mute& operator=(const Mute&) = delete;

   private:
    bool& muted_;
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
  bool muted_ = false;
  int errorNumber_ = 0;  // of the last error event
};

}  // namespace quillmoor
