// The programs and web addresses that a run starts or calls: before and after it, and before each profile.
#pragma once

#include <functional>
#include <string>

#include "engine/RunLog.h"
#include "platform/net/WebRequest.h"
#include "platform/system/ShellOpen.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/SiteProfile.h"

namespace quillmoor {

/// No action can stop a run: the caller swallows what an operation raises.
class RunActions {
 public:
  virtual ~RunActions() = default;

  /// Called once per run, after the wait for the network and before the first profile.
  virtual void RunBeforeActions(RunLog& log) = 0;
  /// Called once per run, after the last profile, even after a Stop.
  virtual void RunAfterActions(RunLog& log) = 0;
  /// For each enabled profile, before it connects.
  virtual void RunProfileActions(const SiteProfile& profile, RunLog& log) = 0;
};

/// Performs the actions of the settings and of each profile, the program before the address; an empty text
/// means no action. Does not wait for programs. An address has two minutes to answer and is not retried; a
/// Stop does not end it, so a window that closes during a run must abort the web request.
class ConfiguredActions final : public RunActions {
 public:
  using ShellOpener = std::function<int(const std::string& target)>;

  /// The settings, which are read again for every action, and the web request must outlive this.
  ConfiguredActions(const ApplicationSettings& settings, WebRequest& web, ShellOpener open = ShellOpen);

  void RunBeforeActions(RunLog& log) override;
  void RunAfterActions(RunLog& log) override;
  void RunProfileActions(const SiteProfile& profile, RunLog& log) override;

 private:
  void startProgram(const std::string& program, RunLog& log);
  /// `subject` begins the log line that reports the result.
  void callAddress(const std::string& address, const char* subject, RunLog& log);

  const ApplicationSettings& settings_;
  WebRequest& web_;
  ShellOpener open_;
};

}  // namespace quillmoor
