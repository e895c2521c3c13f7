// What a run starts and calls before it, after it and before each profile.
#pragma once

#include <functional>
#include <string>

#include "engine/RunLog.h"
#include "engine/RunProfileFields.h"
#include "platform/net/WebRequest.h"
#include "platform/system/ShellOpen.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// Nothing here can stop a run: what an operation raises is swallowed by the caller.
class RunActions {
 public:
  virtual ~RunActions() = default;

  /// Once a run, after the wait for the network and before the first profile.
  virtual void RunBeforeActions(RunLog& log) = 0;
  /// Once a run, after the last profile; after a Stop too.
  virtual void RunAfterActions(RunLog& log) = 0;
  /// For each enabled profile, before it connects.
  virtual void RunProfileActions(const RunProfileFields& profile, RunLog& log) = 0;
};

/// The programs and addresses of the settings and of each profile, a program before an address; an empty text
/// is no action. Programs are not waited for. An address has two minutes to answer and does not get a second
/// try; a Stop lets it end by itself, so whoever goes away in the middle of a run aborts the web request.
class ConfiguredActions final : public RunActions {
 public:
  using ShellOpener = std::function<int(const std::string& target)>;

  /// The settings, which are read anew at every action, and the web request must outlive this.
  ConfiguredActions(const ApplicationSettings& settings, WebRequest& web, ShellOpener open = ShellOpen);

  void RunBeforeActions(RunLog& log) override;
  void RunAfterActions(RunLog& log) override;
  void RunProfileActions(const RunProfileFields& profile, RunLog& log) override;

 private:
  void startProgram(const std::string& program, RunLog& log);
  /// `subject` leads the line that tells how it went.
  void callAddress(const std::string& address, const char* subject, RunLog& log);

  const ApplicationSettings& settings_;
  WebRequest& web_;
  ShellOpener open_;
};

}  // namespace quillmoor
