// The docking frame: five panes, each with a form, on tabs that can be dragged beside each other.
#pragma once

#include <wx/aui/auibook.h>

#include <optional>
#include <string>

#include "shell/PaneLayout.h"

namespace quillmoor {

class DockingPanes : public wxAuiNotebook {
 public:
  explicit DockingPanes(wxWindow* parent);

  /// Adds the pane with this id and its form, a child of this. Must be called in the order of kPanes.
  void addPane(int id, wxWindow* form);

  /// Brings a pane to the front of its group and makes it the active one.
  void activate(int id);
  /// Activates and focuses the pane after or before the active one, in the order of kPanes. Also done by
  /// Ctrl+Tab and Ctrl+Shift+Tab, wherever the focus is.
  void activateNext(bool backward);
  int activePane() const;

  /// The current layout.
  PaneLayout layout();
  /// Applies a layout; all panes must have been added. If its places are invalid, applies DefaultLayout.
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
