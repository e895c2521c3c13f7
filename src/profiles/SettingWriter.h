// Stores what the controls of a form change, and reports failures to the user.
#pragma once

#include <exception>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "profiles/UserPrompts.h"

namespace quillmoor {

/// The text for the user about an error from storing: what failed and, on the next line, why.
std::string StorageFailure(const std::exception& error);

/// A control stores its value with every change, so a failure would be reported with every letter typed. It
/// is therefore reported once for each setting, and again only after the setting could be stored.
class SettingWriter {
 public:
  /// `prompts` must outlive this.
  explicit SettingWriter(UserPrompts& prompts) : prompts_(prompts) {}

  void Write(const std::string& key, const std::string& text);
  void WriteFlag(const std::string& key, bool checked) { Write(key, checked ? "1" : "0"); }

  /// Calls `store`, which stores the setting `key` and may raise RegistryError or RegistryStoreError.
  void Attempt(const std::string& key, const std::function<void()>& store);

  /// Runs `changes`, which store several settings; all failures are reported in one message.
  void Together(const std::function<void()>& changes);

  /// Runs `changes` without reporting failures.
  void Quietly(const std::function<void()>& changes);

 private:
  enum class Telling { atOnce, together, never };

  void run(const std::function<void()>& changes, Telling telling);
  void tell();

  UserPrompts& prompts_;
  std::set<std::string> told_;
  std::vector<std::string> failures_;  // not reported yet
  Telling telling_ = Telling::atOnce;
};

}  // namespace quillmoor
