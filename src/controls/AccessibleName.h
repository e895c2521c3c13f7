// Names for screen readers of controls without a caption.
#pragma once

#include <wx/string.h>

#include <functional>

class wxStaticText;
class wxWindow;

namespace quillmoor {

enum class AccessibleRole { native, progressBar, picture };

/// Sets the control's accessible name, and its role where the system cannot know it. Call it again when the
/// name changes. `value` returns what the control shows; used on Windows only, the toolkit has no way
/// elsewhere.
void SetAccessibleName(wxWindow& window, const wxString& name, AccessibleRole role = AccessibleRole::native,
                       std::function<wxString()> value = {});

/// Names the control after the label in front of it, and makes the label's mnemonic focus it.
void SetLabelFor(wxStaticText& label, wxWindow& control);

}  // namespace quillmoor
