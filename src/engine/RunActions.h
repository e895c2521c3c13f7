// What a run starts and calls before it, after it and before each profile.
#pragma once

#include "engine/RunLog.h"
#include "engine/RunProfileFields.h"
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

/// For a build that can neither start programs nor call addresses: says so in the log when one is asked for.
class NoRunActions final : public RunActions {
 public:
  /// The settings must outlive this.
  explicit NoRunActions(const ApplicationSettings& settings) : settings_(settings) {}

  void RunBeforeActions(RunLog& log) override;
  void RunAfterActions(RunLog& log) override;
  void RunProfileActions(const RunProfileFields& profile, RunLog& log) override;

 private:
  const ApplicationSettings& settings_;
};

}  // namespace quillmoor
