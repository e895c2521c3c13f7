// The site profile form, and the user's hands on it.
#pragma once

#include <string>
#include <vector>

#include "GuiFixture.h"

namespace quillmoor {

inline wxString described(const wxWindow* window) {
  return window ? window->GetName() + " \"" + window->GetLabel() + "\"" : "nothing";
}

class SiteFormTest : public GuiTest {
 protected:
  void open() {
    start();
    form = main->site;
    fields = form->fields;
    ASSERT_TRUE(waitUntil([&] { return fields->box("name")->IsShownOnScreen(); }));
  }
  /// The same with the profile "site" in it.
  void openSite() {
    open();
    clickProfile("site");
    ASSERT_TRUE(isOpen("site"));
  }
  void choose(int id) { clickEvent(form->wndTaskPanel->command(id)); }
  void chooseProxy(int type) {
    fields->cboProxyType->SetSelection(type);
    command(fields->cboProxyType, wxEVT_CHOICE);
  }
  void focus(wxWindow* control) {
    auto* const top = static_cast<wxTopLevelWindow*>(wxGetTopLevelParent(control));
    top->Raise();
    EXPECT_TRUE(waitUntil([&] { return top->IsActive(); })) << described(control);
    control->SetFocus();
    EXPECT_TRUE(waitUntil([&] { return hasFocus(control); })) << described(control);
  }
  /// Of a part that is the toolkit's own there is no window.
  bool hasFocus(const wxWindow* control) const {
    return quillmoor::hasFocus(control) || (!wxWindow::FindFocus() && control == fields->cboProxyType);
  }
  /// Real keys into a text box, whose whole text they replace.
  void type(wxTextCtrl* box, const char* text) {
    if (hasFocus(box)) box->SelectAll();
    focus(box);
    ASSERT_TRUE(waitUntil([&] { return box->GetStringSelection() == box->GetValue(); })) << described(box);
    hand.Text(text);
    EXPECT_TRUE(waitUntil([&] { return box->GetValue() == text; })) << described(box) << box->GetValue();
  }
  /// A click on the profile of that name in the task panel.
  void clickProfile(const std::string& name) {
    ReportControl& list = form->wndTaskPanel->list();
    for (std::size_t row = 0; row < list.rowCount(); ++row) {
      if (list.item(row, 0) != name) continue;
      const wxDataViewItem item = list.itemAt(row);
      list.EnsureVisible(item);
      wxRect place;
      ASSERT_TRUE(waitUntil([&] { return (place = list.GetItemRect(item)).height > 0; }));
      hand.MouseMove(list.ClientToScreen(place.GetPosition() + wxPoint(30, place.height / 2)));
      hand.MouseClick();
      return;
    }
    ADD_FAILURE() << name << " is not in the list";
  }
  bool isOpen(const std::string& name) {
    return waitUntil([&] { return fields->box("name")->GetValue() == wxString::FromUTF8(name); });
  }
  /// Its whole height is within what is seen of the form, and its caption or beginning too.
  bool inView(const wxWindow* control) {
    const wxRect view = fields->GetScreenRect(), place = control->GetScreenRect();
    return place.y >= view.y && place.GetBottom() <= view.GetBottom() && view.Intersects(place);
  }
  std::vector<std::string> listed() {
    const ReportControl& list = form->wndTaskPanel->list();
    std::vector<std::string> names;
    for (std::size_t row = 0; row < list.rowCount(); ++row) names.push_back(list.item(row, 0));
    return names;
  }
  std::vector<std::string> folders() {
    std::vector<std::string> all;
    for (std::size_t row = 0; row < fields->lvwFolders->rowCount(); ++row)
      all.push_back(fields->lvwFolders->item(row, 0));
    return all;
  }

  frmSite* form = nullptr;
  SiteFields* fields = nullptr;
};

}  // namespace quillmoor
