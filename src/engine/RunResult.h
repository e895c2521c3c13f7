// The outcome of a run, for its reports: the end of the log, the terminal, the window, the notification.
#pragma once

#include <string>
#include <vector>

#include "engine/RunFailures.h"

namespace quillmoor {

/// The outcome of one enabled profile.
struct ProfileResult {
  std::string profileId;   // "" for failures that belong to no profile
  bool completed = false;  // false: stopped, or `problem` says why
  /// Why the profile was not backed up at all; "" when it was backed up or stopped.
  std::string problem;
  RunFailures failures;  // without what a Stop left undone

  bool failed() const { return !problem.empty() || !failures.empty(); }
};

// All texts are printable and have no line break.

/// "3 failures, the first: /www/a.php: 550 Forbidden.", or the profile's `problem`; "" when nothing failed.
std::string FailureSummary(const ProfileResult& result);

/// One line about all profiles that failed: "My site: 3 failures, the first: ..."; for several profiles their
/// names and counts. "" when nothing failed.
std::string FailureNotice(const std::vector<ProfileResult>& results);

/// A line with the profile's name and its number of failures or its problem, a line for each named failure
/// with its reason, and a line with the number of others. Empty when nothing failed.
std::vector<std::string> FailureLines(const ProfileResult& result);

}  // namespace quillmoor
