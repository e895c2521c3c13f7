#include "engine/RunResult.h"

#include "engine/SafeName.h"

namespace quillmoor {
namespace {

std::string countOrProblem(const ProfileResult& result) {
  if (!result.problem.empty()) return PrintableName(result.problem);
  const std::size_t count = result.failures.count();
  return std::to_string(count) + (count == 1 ? " failure" : " failures");
}

std::string namePrefix(const ProfileResult& result) {
  return result.profileId.empty() ? "" : PrintableName(result.profileId) + ": ";
}

std::string textOf(const RunFailure& failure) {
  return PrintableName(failure.name) + (failure.reason.empty() ? "" : ": " + PrintableName(failure.reason));
}

}  // namespace

std::string FailureSummary(const ProfileResult& result) {
  if (!result.failed()) return "";
  std::string text = countOrProblem(result);
  if (result.problem.empty()) {
    text += result.failures.count() == 1 ? ": " : ", the first: ";
    text += textOf(result.failures.named().front());
  }
  return text;
}

std::string FailureNotice(const std::vector<ProfileResult>& results) {
  std::string shortest, whole;
  std::size_t failed = 0;
  for (const ProfileResult& result : results) {
    if (!result.failed()) continue;
    if (failed++ != 0) shortest += "; ";
    shortest += namePrefix(result) + countOrProblem(result);
    whole = namePrefix(result) + FailureSummary(result);
  }
  return failed == 1 ? whole : shortest;
}

std::vector<std::string> FailureLines(const ProfileResult& result) {
  if (!result.failed()) return {};
  std::vector<std::string> lines{namePrefix(result) + countOrProblem(result)};
  for (const RunFailure& failure : result.failures.named()) lines.push_back("    " + textOf(failure));
  const std::size_t unnamed = result.failures.count() - result.failures.named().size();
  if (unnamed != 0) lines.push_back("    and " + std::to_string(unnamed) + " more");
  return lines;
}

}  // namespace quillmoor
