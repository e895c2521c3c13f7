#include "shell/RunNotice.h"

#include <algorithm>
#include <cstdint>

#include "base/Utf8.h"
#include "shell/TrayTip.h"

namespace quillmoor {
namespace {

constexpr std::size_t kLongestLine = 120;  // characters

std::string counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

std::string RunTip(const std::string& title, const std::string& profile, int percent) {
  const std::string before = title + " - ";
  const std::string after = ": " + std::to_string(percent) + "%";
  return before + FirstCharacters(profile, kLongestTip - before.size() - after.size()) + after;
}

std::string RunNotice(const std::vector<ProfileResult>& results, bool stopped, double files) {
  const auto completed = static_cast<std::size_t>(
      std::count_if(results.begin(), results.end(), [](const ProfileResult& one) { return one.completed; }));
  if (results.empty()) return stopped ? "The backup was stopped." : "No profile is enabled.";
  std::string text = stopped ? "The backup was stopped. " : "";
  text += counted(completed, "profile") + " completed";
  if (completed != results.size()) text += ", " + std::to_string(results.size() - completed) + " not";
  text += ". " + counted(static_cast<std::size_t>(files), "file") + ".";
  constexpr int kMostLines = 4;  // desktops show no more lines of a notification
  int lines = 0;
  for (const ProfileResult& one : results) {
    if (!one.failed()) continue;
    if (lines++ == kMostLines) return text + "\n... See the log for the rest.";
    text += "\n" + (one.profileId.empty() ? "" : one.profileId + ": ") +
            FirstCharacters(FailureSummary(one), kLongestLine);
  }
  return text;
}

}  // namespace quillmoor
