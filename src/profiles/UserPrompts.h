// Message boxes and choosers as the editors use them, without the windows that show them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillmoor {

struct Message {
  enum class Buttons { ok, yesNo, yesNoCancel };
  enum class Icon { critical, warning, information };

  std::string title;
  std::string text;
  Buttons buttons = Buttons::ok;
  Icon icon = Icon::critical;
  int defaultButton = 1;  // counted from 1 in the order of the name of `buttons`
};

/// An error that the user has to correct.
inline Message ErrorMessage(std::string text) {
  return {"Error", std::move(text), Message::Buttons::ok, Message::Icon::critical, 1};
}

inline constexpr std::string_view kFileChooserTitle = "Open";
inline constexpr std::string_view kFileChooserFilter = "All Files (*.*)|*.*";
inline constexpr std::string_view kFolderChooserTitle = "Select folder";

class UserPrompts {
 public:
  enum class Answer { ok, yes, no, cancel };

  virtual ~UserPrompts() = default;

  /// Shows a message box and returns when it is closed; returns `cancel` when it was closed without a button,
  /// or `no` where there is no Cancel.
  virtual Answer ShowMessage(const Message& message) = 0;
  /// An existing file; std::nullopt when the user cancels. `filter`: pairs of a name and a pattern, joined
  /// with "|". `chosen`: the current choice, where the chooser starts if it exists.
  virtual std::optional<std::string> ChooseFile(std::string_view title, std::string_view filter,
                                                const std::string& chosen) = 0;
  virtual std::optional<std::string> ChooseFolder(std::string_view title, const std::string& chosen) = 0;
};

}  // namespace quillmoor
