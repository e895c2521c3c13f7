// UserPrompts shown as the system's dialogs: message boxes, file and folder choosers.
#pragma once

#include "profiles/UserPrompts.h"

class wxWindow;

namespace quillmoor {

class WindowPrompts final : public UserPrompts {
 public:
  /// `form`, whose frame is the parent of every dialog, must outlive this.
  explicit WindowPrompts(wxWindow* form) : form_(form) {}

  Answer ShowMessage(const Message& message) override;
  std::optional<std::string> ChooseFile(std::string_view title, std::string_view filter,
                                        const std::string& chosen) override;
  std::optional<std::string> ChooseFolder(std::string_view title, const std::string& chosen) override;

 private:
  wxWindow* const form_;
};

}  // namespace quillmoor
