// The site profile form in the program.
#pragma once

#include <string>
#include <vector>

#include "GuiFixture.h"

namespace quillmoor {

class SiteFormTest : public GuiTest {
 protected:
  void open() {
    start();
    form = main->site;
    fields = form->fields;
    ASSERT_TRUE(waitUntil([&] { return fields->box("name")->IsShownOnScreen(); }));
  }
  /// Opens the program and the profile "site".
  void openSite() {
    open();
    clickProfile("site");
    ASSERT_TRUE(isOpen("site"));
  }
  void choose(int id) { clickEvent(form->wndTaskPanel->command(id)); }
  /// A click on the profile of that name in the task panel.
  void clickProfile(const std::string& name) {
    ReportControl& list = form->wndTaskPanel->list();
    const auto names = listed();
    const auto row = std::find(names.begin(), names.end(), name) - names.begin();
    const wxDataViewItem item = list.itemAt(static_cast<std::size_t>(row));
    list.EnsureVisible(item);
    wxRect place;
    ASSERT_TRUE(waitUntil([&] { return (place = list.GetItemRect(item)).height > 0; })) << name;
    hand.MouseMove(list.ClientToScreen(place.GetPosition() + wxPoint(30, place.height / 2)));
    hand.MouseClick();
  }
  bool isOpen(const std::string& name) {
    return waitUntil([&] { return fields->box("name")->GetValue() == wxString::FromUTF8(name); });
  }
  std::vector<std::string> listed() { return rowsOf(form->wndTaskPanel->list()); }
  std::vector<std::string> folders() { return rowsOf(*fields->lvwFolders); }

  frmSite* form = nullptr;
  SiteFields* fields = nullptr;
};

}  // namespace quillmoor
