#include "engine/FtpSession.h"

#include <algorithm>
#include <cmath>

#include "engine/BusyFlag.h"
#include "engine/ErrorGuard.h"
#include "engine/FtpConnection.h"
#include "engine/LogColours.h"
#include "engine/mGeneral.h"
#include "profiles/LenientNumber.h"

namespace quillmoor {

FtpSession::FtpSession(const RunServices& services, RunState& state, RunLog& log, NetworkWait& network)
    : services_(services), state_(state), log_(log), network_(network) {
  client_.pump = services.pump;
  client_.onError = [this](int, const std::string& description) { showError(description); };
  client_.onState = [this](FtpState now) { showState(now); };
  client_.onProgress = [this](const FtpProgress& progress) { showProgress(progress); };
}

void FtpSession::SetFtpProperties() {
  quillmoor::SetFtpProperties(client_, state_.profile);
}

void FtpSession::ConnectAndLogin() {
  if (connected()) return;
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
  IsNetworkAvailable(services_.network);  // asked once and not used: the system refreshes its answer
  while (!connected() && !state_.StopRequested) {
    log_.AppendLog("Trying to connect and login through LAN connection.\r\n", log_colour::kWaiting, false);
    TryLogin();
    if (state_.StopRequested) return;
    if (!connected()) network_.waitBeforeRetry();
  }
}

void FtpSession::loginOverDialUp() {
  while (!connected() && !state_.StopRequested) {
    network_.dialUntilConnected();
    while (!connected() && !state_.StopRequested && network_.dialledConnectionIsUp()) {
      TryLogin();
      if (!connected()) network_.breathe();
    }
    // A connection that was not dialled here ends the dialling but is no reason to log in: wait for either
    // to change without keeping the processor.
    if (!connected()) network_.breathe();
  }
}

void FtpSession::TryLogin() {
  state_.LoggedIn = false;
  Guarded([&] {
    const RunProfileFields& profile = state_.profile;
    SetFtpProperties();
    // The profile's own port range is not used, on purpose: a manual range is any port as well.
    client_.dataPortRange = profile.ManualPort ? "0:0" : "0";
    expect(FtpMethod::login);
    client_.login(profile.Host, profile.UserID, profile.Password, profile.Account, ToLong(profile.Port));
    state_.LoggedIn = true;
    if (!profile.DefaultDir.empty()) client_.setCurrentRemoteDirectory(profile.DefaultDir);
  });
  if (!connected()) state_.LoggedIn = false;
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

std::string FtpSession::list() {
  expect(FtpMethod::list);
  return client_.list();
}

void FtpSession::getFile(const std::string& remotePath, const std::string& localPath, std::int64_t size) {
  expect(FtpMethod::getFile);
  state_.transferStartTick = services_.tick();
  client_.getFile(remotePath, localPath, size);
}

void FtpSession::sendAhead(const std::vector<std::string>& commandLines, bool dataConnection) {
  client_.sendAhead(commandLines, dataConnection);
}

void FtpSession::showError(const std::string& description) {
  state_.TransferOutcome = TransferOutcomes::failedOrStopped;
  if (!muted_) log_.AppendLog("Ftp Error: " + description + "\r\n", log_colour::kError, true);
}

void FtpSession::showState(FtpState state) {
  log_.AppendLog(ConnectionStateLine(state, state_.profile.Host), log_colour::kConnection, true);
}

void FtpSession::showProgress(const FtpProgress& progress) {
  if (state_.StopRequested) {
    state_.TransferOutcome = TransferOutcomes::failedOrStopped;
    return;
  }
  if (muted_) return;
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
  if (size > 0) {
    const double percent = static_cast<double>(count) / static_cast<double>(size) * 100;
    services_.display.showProgress(static_cast<int>(std::lrint(std::min(percent, 100.0))));
  }
  if (count > 0) services_.display.showRate(FormatRate(count, services_.tick() - state_.transferStartTick));
}

}  // namespace quillmoor
