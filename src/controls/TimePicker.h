// A field for a time of day.
#pragma once

#include <wx/timectrl.h>

namespace quillmoor {

/// Where the toolkit's is made of parts, its text takes every key for itself, also one with Alt, which leads
/// to another field. Not so here.
class TimePicker final : public wxTimePickerCtrl {
 public:
  TimePicker(wxWindow* parent, const wxString& name);
  ~TimePicker() override;
};

}  // namespace quillmoor
