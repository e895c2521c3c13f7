// What became of a run, for those who report it: the log's end, the terminal, the window, the notification.
#pragma once

#include <string>
#include <vector>

#include "engine/RunFailures.h"

namespace quillmoor {

/// What became of one enabled profile.
struct ProfileResult {
  std::string profileId;   // "" of what concerns no single profile
  bool completed = false;  // false: stopped, or `problem` says why
  /// Why the profile was not backed up at all; "" when it was, or was stopped.
  std::string problem;
  RunFailures failures;  // what a Stop has left undone is not among them

  bool failed() const { return !problem.empty() || !failures.empty(); }
};

// All texts are fit to be shown and have no line break.

/// "3 failures, the first: /www/a.php: 550 Forbidden.", or the profile's problem; "" when nothing failed.
std::string FailureSummary(const ProfileResult& result);

/// One line about all profiles that failed: "My site: 3 failures, the first: ..."; of several their names and
/// numbers. "" when nothing failed.
std::string FailureNotice(const std::vector<ProfileResult>& results);

/// The profile's name and its number of failures or its problem; a line for each failure that is known by
/// name, with its reason; how many more there are. Empty when nothing failed.
std::vector<std::string> FailureLines(const ProfileResult& result);

}  // namespace quillmoor
