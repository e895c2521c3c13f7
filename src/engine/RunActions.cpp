#include "engine/RunActions.h"

#include <utility>

#include "engine/LogColours.h"

namespace quillmoor {
namespace {

constexpr std::int32_t kTimeoutMs = 120'000;
constexpr std::int32_t kSuccess = 200;  // no other status counts as one

// Begin the log line with an address's result: of the run's own addresses, and of a profile's.
constexpr const char* kGlobalSubject = "Connection Status ";
constexpr const char* kProfileSubject = "Connection ";

}  // namespace

ConfiguredActions::ConfiguredActions(const ApplicationSettings& settings, WebRequest& web, ShellOpener open)
    : settings_(settings), web_(web), open_(std::move(open)) {}

void ConfiguredActions::RunBeforeActions(RunLog& log) {
  if (!settings_.RunBefore.empty()) startProgram(settings_.RunBefore, log);
  if (!settings_.ConnectBefore.empty()) callAddress(settings_.ConnectBefore, kGlobalSubject, log);
}

void ConfiguredActions::RunAfterActions(RunLog& log) {
  if (!settings_.RunAfter.empty()) open_(settings_.RunAfter);  // deliberate: not logged, unlike the others
  if (!settings_.ConnectAfter.empty()) callAddress(settings_.ConnectAfter, kGlobalSubject, log);
}

void ConfiguredActions::RunProfileActions(const SiteProfile& profile, RunLog& log) {
  if (!profile.RunProgram.empty()) startProgram(profile.RunProgram, log);
  if (!profile.RunURL.empty()) callAddress(profile.RunURL, kProfileSubject, log);
}

void ConfiguredActions::startProgram(const std::string& program, RunLog& log) {
  log.AppendLog("Running: " + program + "...", log_colour::kAction, true);
  open_(program);  // deliberate: "Done." whatever the result
  log.AppendLog("Done.\r\n", log_colour::kAction, true);
}

void ConfiguredActions::callAddress(const std::string& address, const char* subject, RunLog& log) {
  log.AppendLog("Connecting to: " + address + "\r\n", log_colour::kAction, true);
  web_.timeoutMs = kTimeoutMs;
  web_.request.body.clear();
  web_.request.address = address;
  web_.perform();
  const char* const result = web_.response.statusCode == kSuccess ? "Success. " : "Failed. ";
  log.AppendLog(std::string(subject) + result + "\r\n", log_colour::kAction, true);
}

}  // namespace quillmoor
