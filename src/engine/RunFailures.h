// What could not be backed up: counts all failures and keeps the first ones by name.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// A file, folder, archive or copy that failed, and why: a sentence or the server's reply. Remote names are
/// the server's bytes.
struct RunFailure {
  std::string name;
  std::string reason;
};

class RunFailures {
 public:
  static constexpr std::size_t kMostNamed = 20;

  void add(std::string_view name, std::string_view reason) {
    if (++count_ <= kMostNamed) named_.push_back({std::string(name), std::string(reason)});
  }
  void add(const RunFailures& others) {
    for (const RunFailure& failure : others.named_) add(failure.name, failure.reason);
    count_ += others.count_ - others.named_.size();
  }
  std::size_t count() const { return count_; }
  bool empty() const { return count_ == 0; }
  /// The first kMostNamed, in the order in which they occurred.
  const std::vector<RunFailure>& named() const { return named_; }

 private:
  std::size_t count_ = 0;
  std::vector<RunFailure> named_;
};

}  // namespace quillmoor
