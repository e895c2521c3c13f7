// A field for a time of day.
#pragma once

#include <wx/timectrl.h>

namespace quillmoor {

/// Leaves keys with Alt to the form. If the toolkit's own picker consists of parts, its text box takes every
/// key, including mnemonics of other fields.
class TimePicker final : public wxTimePickerCtrl {
 public:
  TimePicker(wxWindow* parent, const wxString& name);
  ~TimePicker() override;
};

}  // namespace quillmoor
