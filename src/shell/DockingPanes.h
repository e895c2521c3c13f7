// The docking frame: five panes, each with a form, behind tabs that can be dragged beside one another.
#pragma once

#include <wx/aui/auibook.h>

#include <optional>
#include <string>

#include "shell/PaneLayout.h"

namespace quillmoor {

class DockingPanes : public wxAuiNotebook {
 public:
  explicit DockingPanes(wxWindow* parent);

  /// Adds the pane of that id with the form, whose parent is this. In the order of the table.
  void addPane(int id, wxWindow* form);

  /// Brings a pane to the front of its group and makes it the active one.
  void activate(int id);
  /// The same for the pane after the active one, or before it, in the order of the table; the keyboard goes
  /// with it. Ctrl+Tab and Ctrl+Shift+Tab do it wherever the focus is.
  void activateNext(bool backward);
  int activePane() const;

  /// The layout now.
  PaneLayout layout();
  /// Arranges the panes so; all must have been added. One whose places mean nothing gives the first layout.
  void setLayout(const PaneLayout& layout);
  void resetLayout() { setLayout(DefaultLayout()); }

 private:
  wxWindow* form(int id) const;
  int idOf(const wxWindow* form) const;
  wxAuiTabCtrl* tabsOf(int id);
  void gather();
  bool placeGroups(const std::string& places, std::size_t groups);
  void moveTo(int id, wxAuiTabCtrl* group);
  void showMenu();
  void onKey(wxKeyEvent& event);
};

}  // namespace quillmoor
