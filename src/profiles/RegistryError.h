// The one error of the registry class.
#pragma once

#include <stdexcept>
#include <string>

namespace quillmoor {

class RegistryError : public std::runtime_error {
 public:
  static constexpr int kNumber = 26001;

  RegistryError(std::string source, const std::string& description)
      : std::runtime_error(description), source_(std::move(source)) {}

  int number() const { return kNumber; }
  /// The program's name followed by ".cRegistry".
  const std::string& source() const { return source_; }

 private:
  std::string source_;
};

}  // namespace quillmoor
