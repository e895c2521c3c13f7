// Answers the prompts as a test has set them, and records what was shown.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "profiles/UserPrompts.h"

namespace quillmoor {

inline bool operator==(const Message& a, const Message& b) {
  return a.title == b.title && a.text == b.text && a.buttons == b.buttons && a.icon == b.icon &&
         a.defaultButton == b.defaultButton;
}

namespace testing {

class ScriptedPrompts final : public UserPrompts {
 public:
  Answer answer = Answer::ok;
  std::optional<std::string> choice;
  std::vector<Message> messages;
  std::vector<std::string> choosers;  // "file TITLE: FILTER @ CHOSEN", "folder TITLE @ CHOSEN"

  Answer ShowMessage(const Message& message) override {
    messages.push_back(message);
    return answer;
  }
  std::optional<std::string> ChooseFile(std::string_view title, std::string_view filter,
                                        const std::string& chosen) override {
    choosers.push_back("file " + std::string(title) + ": " + std::string(filter) + " @ " + chosen);
    return choice;
  }
  std::optional<std::string> ChooseFolder(std::string_view title, const std::string& chosen) override {
    choosers.push_back("folder " + std::string(title) + " @ " + chosen);
    return choice;
  }

  /// The messages shown since the last call.
  std::vector<Message> takeMessages() { return std::exchange(messages, {}); }
};

}  // namespace testing
}  // namespace quillmoor
