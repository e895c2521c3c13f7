// A form of settings alone in a frame, over a registry of its own, and a hand for its controls.
#pragma once

#include <wx/sizer.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
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

  /// For the form that is made; it becomes their owner.
  std::unique_ptr<UserPrompts> ownPrompts() { return std::move(prompts_); }

  void present(ScrolledForm* made) {
    form = made;
    form->Bind(wxEVT_CHILD_FOCUS, [this](wxChildFocusEvent& event) {
      told_ = event.GetWindow();
      event.Skip();
    });
    auto* const all = new wxBoxSizer(wxVERTICAL);
    all->Add(form, wxSizerFlags(1).Expand());
    frame->SetSizer(all);
    frame->Show();
    frame->Raise();
    ASSERT_TRUE(
        waitUntil([&] { return frame->IsActive() && form->IsShownOnScreen() && form->GetSize().y > 100; }));
  }
  void resize(wxSize size) {
    frame->SetClientSize(size);
    ASSERT_TRUE(waitUntil([&] { return form->GetSize() == size; })) << form->GetSize().x;
  }

  static void press(wxButton* button) {
    EXPECT_TRUE(button->IsEnabled()) << button->GetName();
    clickEvent(button);
  }
  /// A control that is used, and what is stored then. What the program goes by is the editors' own tests'.
  struct ControlRow {
    wxWindow* control;
    std::function<void()> hand;
    const char* key;
    std::string stored;
  };
  /// One after the other. Together with `others`, whose use is part of another row, they are all that there
  /// are.
  void expectEachDoesAsSaid(const std::vector<ControlRow>& rows, std::set<std::string> others) {
    for (const auto& row : rows) {
      others.insert(row.control->GetName().utf8_string());
      row.hand();
      EXPECT_EQ(ReadSetting(row.key, "nothing"), row.stored) << row.control->GetName();
    }
    EXPECT_EQ(others, inputNames()) << "a control that nothing happens to";
  }
  static std::string text(const wxControl* label) { return label->GetLabelText().utf8_string(); }

  /// What the user can put the focus on, composite controls as one.
  std::vector<wxWindow*> inputs() const {
    std::vector<wxWindow*> found;
    collect(form, found);
    return found;
  }
  std::set<std::string> inputNames() const {
    std::set<std::string> names;
    for (const wxWindow* input : inputs()) names.insert(input->GetName().utf8_string());
    return names;
  }
  void focus(wxWindow* control) {
    frame->Raise();
    control->SetFocus();
    EXPECT_TRUE(waitUntil([&] { return hasFocus(control); })) << control->GetName();
  }
  wxWindow* focused() const {
    for (wxWindow* input : inputs()) {
      if (hasFocus(input)) return input;
    }
    // The focus of a part that is the toolkit's own: it knows no window for it, but has told the form.
    return wxWindow::FindFocus() ? nullptr : told_;
  }

  /// The names that the Tab key leads through, once around from the first on.
  std::vector<std::string> tabOrder(wxWindow* first) {
    focus(first);
    std::vector<std::string> names;
    wxWindow* at = first;
    do {
      names.push_back(at->GetName().utf8_string());
      wxWindow* const before = at;
      // Of one that is made of several, each may be a stop, and not all of them are the toolkit's to tell of.
      for (int keys = 0; (!at || at == before) && keys < 4; ++keys) {
        hand.Char(WXK_TAB);
        waitUntil([&] { return (at = focused()) && at != before; }, std::chrono::seconds(2));
      }
    } while (at && at != first && at->GetName() != names.back());
    return names;
  }

  /// Whatever has a text must have the room for it, and whatever gets the focus must come into view.
  void expectRoom(wxSize size) {
    resize(size);
    if (size.x >= form->FromDIP(400)) {
      EXPECT_LE(form->GetVirtualSize().x, size.x) << "scrolls sideways at " << size.x;
    }
    for (wxWindow* const input : inputs()) {
      const bool captioned = !input->GetLabel().empty() && !dynamic_cast<wxTextCtrl*>(input);
      EXPECT_TRUE(!captioned || input->GetSize().x >= input->GetBestSize().x) << input->GetName();
      if (!input->IsEnabled()) continue;
      input->SetFocus();
      EXPECT_TRUE(waitUntil([&] {
        const wxRect view = form->GetScreenRect(), place = input->GetScreenRect();
        return hasFocus(input) && place.GetTop() >= view.GetTop() && place.GetLeft() < view.GetRight() &&
               place.GetTop() + std::min(place.height, view.height) <= view.GetBottom() + 1;
      })) << input->GetName()
          << " at " << input->GetScreenRect().y << " of height " << input->GetSize().y << " in a form at "
          << form->GetScreenRect().y << (hasFocus(input) ? "" : ", not focused");
    }
  }

  testing::OwnRegistry registry;
  ApplicationSettings settings;
  testing::ScriptedPrompts& prompts;
  ScrolledForm* form = nullptr;

 private:
  wxWindow* told_ = nullptr;

  static void collect(const wxWindow* window, std::vector<wxWindow*>& found) {
    for (wxWindow* const child : window->GetChildren()) {
      const bool composite = child->GetName().StartsWith("dtp");
      if (composite || child->AcceptsFocus()) found.push_back(child);
      if (!composite) collect(child, found);
    }
  }

  std::unique_ptr<testing::ScriptedPrompts> prompts_;
};

}  // namespace quillmoor
