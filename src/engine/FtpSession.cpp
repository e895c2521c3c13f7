#include "engine/FtpSession.h"

#include <algorithm>
#include <utility>

#include "base/BusyFlag.h"
#include "base/ErrorGuard.h"
#include "engine/FtpAdvice.h"
#include "engine/FtpConnection.h"
#include "engine/LogColours.h"
#include "engine/SafeName.h"
#include "engine/mGeneral.h"

namespace quillmoor {

FtpSession::FtpSession(const RunServices& services, RunState& state, RunLog& log, NetworkWait& network)
    : services_(services), state_(state), log_(log), network_(network) {
  client_.pump = services.pump;
  client_.onError = [this](int number, const std::string& description) { showError(number, description); };
  client_.onState = [this](FtpState now) { showState(now); };
  client_.onProgress = [this](const FtpProgress& progress) { showProgress(progress); };
}

void FtpSession::SetFtpProperties() {
  quillmoor::SetFtpProperties(client_, state_.profile);
}

void FtpSession::ConnectAndLogin() {
  if (connected() || state_.loginGivenUp) return;
  const BusyFlag busy(state_.connectBusy);
  if (!busy.taken()) return;
  Guarded([&] {
    if (services_.settings.AutoDial == 1) {
      loginOverDialUp();
    } else {
      loginOverLan();
    }
  });
}

void FtpSession::loginOverLan() {
  IsNetworkAvailable(services_.network);  // result ignored: the query makes the system refresh its state
  for (std::int32_t attempts = 1; !connected() && !state_.StopRequested; ++attempts) {
    log_.AppendLog("Trying to connect and login through LAN connection.\r\n", log_colour::kWaiting, false);
    TryLogin();
    if (state_.StopRequested) return;
    if (!connected() && !mayTryAgain(attempts)) return;
    if (!connected()) network_.waitBeforeRetry(pauseFactor(attempts));
  }
}

/// Whether the settings allow another attempt after this many. Only the user can decide about a certificate.
bool FtpSession::mayTryAgain(std::int32_t attempts) {
  const std::int32_t most = services_.settings.LoginAttempts;
  const bool untrusted = errorNumber_ == static_cast<int>(FtpErrorNumber::certificateRejected);
  state_.loginGivenUp = untrusted || (most > 0 && attempts >= most);
  return !state_.loginGivenUp;
}

/// By how much the delay after this attempt is multiplied. With a limit on attempts the delay doubles each
/// time, so that the server does not ban this address for too many failed logins.
std::int32_t FtpSession::pauseFactor(std::int32_t attempts) const {
  constexpr std::int32_t kLongest = 10;
  if (services_.settings.LoginAttempts <= 0) return 1;
  return attempts > 4 ? kLongest : 1 << (attempts - 1);
}

void FtpSession::loginOverDialUp() {
  std::int32_t attempts = 0;
  while (!connected() && !state_.StopRequested) {
    network_.dialUntilConnected();
    while (!connected() && !state_.StopRequested && network_.dialledConnectionIsUp()) {
      TryLogin();
      if (connected() || state_.StopRequested) return;
      if (!mayTryAgain(++attempts)) return;
      if (services_.settings.LoginAttempts <= 0) {
        network_.pumpAndRest();
      } else {
        network_.waitBeforeRetry(pauseFactor(attempts));
      }
    }
    // A connection dialled elsewhere ends the dialling but does not permit a login: wait, without using the
    // processor, until either changes.
    if (!connected()) network_.pumpAndRest();
  }
}

void FtpSession::TryLogin() {
  state_.LoggedIn = false;
  const SiteProfile& profile = state_.profile;
  errorNumber_ = 0;
  Guarded([&] {
    SetFtpProperties();
    // The profile's own port range is not used, on purpose: a manual range is any port as well.
    client_.dataPortRange = profile.ManualPort != 0 ? "0:0" : "0";
    expect(FtpMethod::login);
    LogIn(client_, profile);
    state_.LoggedIn = true;
  });
  if (!state_.LoggedIn) return noteRefusedLogin();
  enterDefaultDir();
  if (!connected()) state_.LoggedIn = false;
}

/// A login that never succeeds blocks the profiles after this one, by default without a limit; the log says
/// so once.
void FtpSession::noteRefusedLogin() {
  constexpr int kReportAfter = 5;
  const bool refused = errorNumber_ >= 400 && errorNumber_ < 600;
  if (!refused || ++state_.loginRefusals != kReportAfter || services_.settings.LoginAttempts > 0) return;
  log_.AppendLog("The server has refused this login " + std::to_string(kReportAfter) +
                     " times. Login attempts are not limited; the setting LoginAttempts sets a limit.\r\n",
                 log_colour::kWaiting, false);
}

void FtpSession::enterDefaultDir() {
  const std::string& folder = state_.profile.DefaultDir;
  std::string reason;
  if (folder.empty() || Guarded([&] { client_.setCurrentRemoteDirectory(folder); }, reason)) return;
  // After a lost connection the next login enters the folder.
  if (!connected() || std::exchange(state_.defaultDirFailed, true)) return;
  state_.countFailure(folder, reason);
  log_.AppendLog("Error: Unable to enter the first folder: " + PrintableName(folder) + "\r\n",
                 log_colour::kError, true);
}

void FtpSession::Logout() {
  log_.AppendLog("Logging out ...\r\n", log_colour::kLogout, true);
  log_.AppendLog(kLogRule, log_colour::kAfterLogout, true);
  Guarded([&] {
    SetFtpProperties();
    expect(FtpMethod::logout);
    client_.logout();
  });
}

void FtpSession::close() {
  if (client_.state() != FtpState::closed) Guarded([&] { client_.abort(); });
}

void FtpSession::expect(FtpMethod method) {
  state_.ExpectedMethod = method;
  state_.TransferOutcome = TransferOutcomes::pending;
}

void FtpSession::command(const std::string& line) {
  expect(FtpMethod::command);
  client_.command(line);
}

std::string FtpSession::currentRemoteDirectory() {
  expect(FtpMethod::currentDirectory);
  return client_.currentRemoteDirectory();
}

void FtpSession::setCurrentRemoteDirectory(const std::string& path) {
  expect(FtpMethod::currentDirectory);
  client_.setCurrentRemoteDirectory(path);
}

FtpListing FtpSession::list() {
  expect(FtpMethod::list);
  return client_.list();
}

void FtpSession::getFile(const std::string& remotePath, const std::string& localPath,
                         std::optional<std::int64_t> listedSize) {
  expect(FtpMethod::getFile);
  state_.transferStartTick = services_.tick();
  client_.getFile(remotePath, localPath, listedSize);
}

void FtpSession::sendAhead(const std::vector<std::string>& commandLines, bool dataConnection) {
  client_.sendAhead(commandLines, dataConnection);
}

void FtpSession::showError(int number, const std::string& description) {
  errorNumber_ = number;
  state_.TransferOutcome = TransferOutcomes::failedOrStopped;
  if (logSuppressed_) return;
  log_.AppendLog("Ftp Error: " + description + "\r\n", log_colour::kError, true);
  const bool login = state_.ExpectedMethod == FtpMethod::login;
  const std::string advice = login ? LoginAdvice(number, description, state_.profile.Security != 0) : "";
  if (!advice.empty()) log_.AppendLog(advice + "\r\n", log_colour::kError, true);
}

void FtpSession::showState(FtpState state) {
  log_.AppendLog(ConnectionStateLine(state, state_.profile.Host), log_colour::kConnection, true);
}

void FtpSession::showProgress(const FtpProgress& progress) {
  if (state_.StopRequested) {
    state_.TransferOutcome = TransferOutcomes::failedOrStopped;
    return;
  }
  if (logSuppressed_) return;
  const bool awaited = progress.method == state_.ExpectedMethod;
  switch (progress.status) {
    case FtpStatus::done:
      if (awaited) state_.TransferOutcome = TransferOutcomes::completed;
      return log_.AppendLog(progress.text, log_colour::kReply, true);
    case FtpStatus::inProgress:
      if (progress.method == FtpMethod::getFile) showTransfer(progress.count, progress.size);
      if (!progress.text.empty()) log_.AppendLog(progress.text, log_colour::kReply, true);
      return;
    case FtpStatus::failed:
      if (awaited) state_.TransferOutcome = TransferOutcomes::failedOrStopped;
      return log_.AppendLog("Ftp Error: " + progress.text, log_colour::kFailedReply, true);
  }
}

void FtpSession::showTransfer(std::int64_t count, std::int64_t size) {
  if (size > 0) services_.display.showProgress(Percentage(count, size));
  if (count > 0) services_.display.showRate(FormatRate(count, services_.tick() - state_.transferStartTick));
}

}  // namespace quillmoor
