#include "controls/TimePicker.h"

#include <wx/event.h>

namespace quillmoor {
namespace {

class WithoutAlt final : public wxEvtHandler {
  bool ProcessEvent(wxEvent& event) override {
    const auto* const key = dynamic_cast<const wxKeyEvent*>(&event);
    return !(key && key->AltDown()) && wxEvtHandler::ProcessEvent(event);
  }
};

}  // namespace

TimePicker::TimePicker(wxWindow* parent, const wxString& name)
    : wxTimePickerCtrl(parent, wxID_ANY, wxDefaultDateTime, wxDefaultPosition, wxDefaultSize, wxTP_DEFAULT,
                       wxDefaultValidator, name) {
  for (wxWindow* const part : GetChildren()) part->PushEventHandler(new WithoutAlt);
}

TimePicker::~TimePicker() {
  for (wxWindow* const part : GetChildren()) part->PopEventHandler(true);
}

}  // namespace quillmoor
