// A form alone in a frame, over a registry of its own, with scripted answers to its prompts.
#pragma once

#include <wx/choice.h>
#include <wx/dataview.h>
#include <wx/dateevt.h>
#include <wx/listbox.h>
#include <wx/radiobut.h>
#include <wx/sizer.h>
#include <wx/slider.h>
#include <wx/timectrl.h>

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "GuiFixture.h"
#include "controls/ScrolledForm.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/ScriptedPrompts.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {

class FormTest : public FrameTest {
 protected:
  FormTest() : FrameTest(wxSize(760, 560)), prompts(*new testing::ScriptedPrompts), prompts_(&prompts) {}

  /// Passes `prompts` to the first form, which owns them from then on.
  std::unique_ptr<UserPrompts> ownPrompts() { return std::move(prompts_); }

  /// Shows a form in place of the one before.
  void present(ScrolledForm* made) {
    if (form) form->Destroy();
    form = made;
    form->Bind(wxEVT_CHILD_FOCUS, [this](wxChildFocusEvent& event) {
      focused_ = event.GetWindow();
      event.Skip();
    });
    auto* const all = new wxBoxSizer(wxVERTICAL);
    all->Add(form, wxSizerFlags(1).Expand());
    frame->SetSizer(all);
    frame->Show();
    frame->Layout();
    frame->Raise();
    ASSERT_TRUE(
        waitUntil([&] { return frame->IsActive() && form->IsShownOnScreen() && form->GetSize().y > 100; }));
  }
  void resize(wxSize size) {
    frame->SetClientSize(size);
    ASSERT_TRUE(waitUntil([&] { return form->GetSize() == size; })) << form->GetSize().x;
  }

  /// Enters a value as a user does: a text, "1" or "0" for a box, the text of an item, a time; buttons and
  /// options are clicked.
  static void use(wxWindow* control, const std::string& value = "") {
    EXPECT_TRUE(control->IsEnabled()) << control->GetName();
    if (auto* const text = dynamic_cast<wxTextCtrl*>(control)) {
      text->SetValue(wxString::FromUTF8(value));
    } else if (auto* const box = dynamic_cast<wxCheckBox*>(control)) {
      tick(box, value == "1");
    } else if (auto* const option = dynamic_cast<wxRadioButton*>(control)) {
      option->SetValue(true);
      command(option, wxEVT_RADIOBUTTON);
    } else if (auto* const list = dynamic_cast<wxControlWithItems*>(control)) {
      list->SetStringSelection(wxString::FromUTF8(value));
      command(list, dynamic_cast<wxChoice*>(control) ? wxEVT_CHOICE : wxEVT_LISTBOX);
    } else if (auto* const time = dynamic_cast<wxTimePickerCtrl*>(control)) {
      time->SetTime(std::stoi(value.substr(0, 2)), std::stoi(value.substr(3)), 0);
      wxDateEvent event(time, time->GetValue(), wxEVT_TIME_CHANGED);
      time->ProcessWindowEvent(event);
    } else {
      clickEvent(dynamic_cast<wxButton*>(control));
    }
  }
  /// What each control but the buttons shows.
  std::map<std::string, wxString> shown() const {
    std::map<std::string, wxString> all;
    for (wxWindow* const input : inputs()) {
      wxString& value = all[input->GetName().utf8_string()];
      if (auto* const text = dynamic_cast<wxTextCtrl*>(input)) value = text->GetValue();
      if (auto* const box = dynamic_cast<wxCheckBox*>(input)) value << box->GetValue();
      if (auto* const option = dynamic_cast<wxRadioButton*>(input)) value << option->GetValue();
      if (auto* const choice = dynamic_cast<wxChoice*>(input)) value = choice->GetStringSelection();
      if (auto* const list = dynamic_cast<wxListBox*>(input)) value = wxJoin(list->GetStrings(), '|');
      if (auto* const slider = dynamic_cast<wxSlider*>(input)) value << slider->GetValue();
      if (auto* const time = dynamic_cast<wxTimePickerCtrl*>(input)) value = time->GetValue().FormatISOTime();
    }
    return all;
  }
  /// A control, what is entered there, and what is stored then.
  struct ControlRow {
    wxWindow* control;
    const char* value;
    const char* key;
    std::string stored;
  };
  /// Enters one row after the other; rows and `others` must name all controls of the form.
  void expectStored(const std::vector<ControlRow>& rows, std::set<std::string> others = {}) {
    for (const auto& row : rows) {
      others.insert(row.control->GetName().utf8_string());
      use(row.control, row.value);
      EXPECT_EQ(ReadSetting(row.key, "nothing"), row.stored) << row.control->GetName();
    }
    for (const auto& [name, value] : shown()) EXPECT_TRUE(others.count(name)) << name << " has no row";
  }
  static std::string text(const wxControl* label) { return label->GetLabelText().utf8_string(); }

  /// What the user can put the focus on, composite controls as one.
  std::vector<wxWindow*> inputs() const {
    std::vector<wxWindow*> found;
    collect(form, found);
    return found;
  }

  /// The Tab key must lead from the first control through all others, in reading order.
  void expectTabOrder(wxWindow* first) {
    focus(first);
    std::set<wxWindow*> reached{first};
    for (wxWindow *before = first, *at = nullptr;; before = std::exchange(at, nullptr)) {
      // Each part of a composite control may be a stop, and the toolkit does not report all of them.
      for (int keys = 0; (!at || at == before) && keys < 4; ++keys) {
        hand.Char(WXK_TAB);
        waitUntil([&] { return (at = focused()) && at != before; }, std::chrono::seconds(2));
      }
      if (!at || !reached.insert(at).second) break;
      const wxPoint way = at->GetScreenPosition() - before->GetScreenPosition();
      const int row = form->FromDIP(10);
      EXPECT_TRUE(way.y > row || (way.y > -row && way.x > 0)) << before->GetName() << ", " << at->GetName();
    }
    for (wxWindow* const input : inputs()) {
      const auto* const text = dynamic_cast<wxTextCtrl*>(input);
      const bool readOnly = text && !text->IsEditable();  // not a stop on every system
      if (!input->IsEnabled() || readOnly || dynamic_cast<wxRadioButton*>(input)) continue;
      EXPECT_TRUE(reached.count(input)) << input->GetName();
    }
  }

  /// Every caption must fit, and every control must be scrolled into view when it gets the focus.
  void expectRoom(wxSize size) {
    resize(size);
    EXPECT_TRUE(size.x < form->FromDIP(400) || form->GetVirtualSize().x <= size.x) << "scrolls sideways";
    for (wxWindow* const input : inputs()) {
      const bool captioned = !input->GetLabel().empty() && !dynamic_cast<wxTextCtrl*>(input);
      EXPECT_TRUE(!captioned || input->GetSize().x >= input->GetBestSize().x) << input->GetName();
      if (!input->IsEnabled()) continue;
      focus(input);
      EXPECT_TRUE(waitUntil([&] {
        const wxRect view = form->GetScreenRect(), place = input->GetScreenRect();
        return place.GetTop() >= view.GetTop() && place.GetLeft() < view.GetRight() &&
               place.GetTop() + std::min(place.height, view.height) <= view.GetBottom() + 1;
      })) << input->GetName();
    }
  }

  testing::OwnRegistry registry;
  ApplicationSettings settings;
  testing::ScriptedPrompts& prompts;
  ScrolledForm* form = nullptr;

 private:
  wxWindow* focused() const {
    for (wxWindow* input : inputs()) {
      if (hasFocus(input)) return input;
    }
    // A native part of a control is no window of the toolkit's, but its focus was reported to the form.
    return wxWindow::FindFocus() ? nullptr : focused_;
  }
  static void collect(const wxWindow* window, std::vector<wxWindow*>& found) {
    for (wxWindow* const child : window->GetChildren()) {
      const bool composite = dynamic_cast<wxTimePickerCtrl*>(child) || dynamic_cast<wxDataViewCtrl*>(child);
      if (composite || child->AcceptsFocus()) found.push_back(child);
      if (!composite) collect(child, found);
    }
  }

  wxWindow* focused_ = nullptr;
  std::unique_ptr<testing::ScriptedPrompts> prompts_;
};

}  // namespace quillmoor
