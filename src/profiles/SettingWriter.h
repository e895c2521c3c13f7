// Storing what the controls of a form have changed, and telling the user when that fails.
#pragma once

#include <exception>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "profiles/UserPrompts.h"

namespace quillmoor {

/// What a user is to read of an error from storing: what it was about, and below that why it failed.
std::string StorageFailure(const std::exception& error);

/// A control stores its value with every change, so one that cannot be stored would be complained of with
/// every letter: the user is told once of each setting, and again only when it could be stored meanwhile.
class SettingWriter {
 public:
  /// `prompts` must outlive this.
  explicit SettingWriter(UserPrompts& prompts) : prompts_(prompts) {}

  void Write(const std::string& key, const std::string& text);
  void WriteFlag(const std::string& key, bool checked) { Write(key, checked ? "1" : "0"); }

  /// Runs what stores the setting `key` and may raise RegistryError or RegistryStoreError.
  void Attempt(const std::string& key, const std::function<void()>& store);

  /// Runs `changes`, which store several settings; of all that fail the user is told in one message.
  void Together(const std::function<void()>& changes);

  /// Runs `changes` without a word about what fails.
  void Quietly(const std::function<void()>& changes);

 private:
  enum class Telling { atOnce, together, never };

  void run(const std::function<void()>& changes, Telling telling);
  void tell();

  UserPrompts& prompts_;
  std::set<std::string> told_;
  std::vector<std::string> failures_;  // still to be told of
  Telling telling_ = Telling::atOnce;
};

}  // namespace quillmoor
