// The one error of the registry class.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace quillmoor {

class RegistryError : public std::runtime_error {
 public:
  static constexpr int kNumber = 26001;

  RegistryError(std::string source, const std::string& description, std::string place, std::string reason)
      : std::runtime_error(reason.empty() ? description : description + " (" + reason + ")"),
        source_(std::move(source)),
        place_(std::move(place)),
        reason_(std::move(reason)) {}

  int number() const { return kNumber; }
  /// The program's name followed by ".cRegistry".
  const std::string& source() const { return source_; }
  /// The full path of the key or value: root, key and value name joined with backslashes.
  const std::string& place() const { return place_; }
  /// Why it failed, "" when unknown. Part of `what()`.
  const std::string& reason() const { return reason_; }

 private:
  std::string source_, place_, reason_;
};

}  // namespace quillmoor
