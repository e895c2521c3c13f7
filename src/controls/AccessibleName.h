// What screen readers say of a control that has no caption of its own.
#pragma once

#include <wx/string.h>

#include <functional>

class wxStaticText;
class wxWindow;

namespace quillmoor {

enum class AccessibleRole { asItIs, progressBar, picture };

/// Names the control, and says what it is where the system cannot know. Call it again when the name changes.
/// `value` is asked for what the control shows, on Windows only: elsewhere the toolkit has no place for it.
void SetAccessibleName(wxWindow& window, const wxString& name, AccessibleRole role = AccessibleRole::asItIs,
                       std::function<wxString()> value = {});

/// Names the control by the label that stands before it, and lets the label's mnemonic lead to it.
void SetLabelFor(wxStaticText& label, wxWindow& control);

}  // namespace quillmoor
