#include "shell/DockingPanes.h"

#include <wx/menu.h>

#include <algorithm>

#include "controls/Pictures.h"
#include "shell/PaneTable.h"

namespace quillmoor {
namespace {

const Pane& paneOf(int id) {
  return *std::find_if(kPanes.begin(), kPanes.end(), [&](const Pane& pane) { return pane.id == id; });
}

wxString groupName(std::size_t group) {
  return wxString::Format("group%zu", group);
}

}  // namespace

DockingPanes::DockingPanes(wxWindow* parent)
    : wxAuiNotebook(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                    wxAUI_NB_TOP | wxAUI_NB_TAB_SPLIT | wxAUI_NB_TAB_MOVE | wxAUI_NB_SCROLL_BUTTONS) {
  SetName("DockingPanes");
  SetMeasuringFont(GetFont().Bold());  // the front tab's font
  Bind(wxEVT_AUINOTEBOOK_TAB_RIGHT_UP, [this](wxAuiNotebookEvent&) { showMenu(); });
  Bind(wxEVT_CHAR_HOOK, &DockingPanes::onKey, this);
}

void DockingPanes::addPane(int id, wxWindow* form) {
  const Pane& pane = paneOf(id);
  AddPage(form, pane.title, false, Picture(pane.picture));
}

/// Pages keep the order in which they were added, even when their tabs are moved.
wxWindow* DockingPanes::form(int id) const {
  return GetPage(static_cast<std::size_t>(&paneOf(id) - kPanes.data()));
}

int DockingPanes::idOf(const wxWindow* form) const {
  return kPanes.at(static_cast<std::size_t>(FindPage(form))).id;
}

void DockingPanes::activate(int id) {
  SetSelection(static_cast<std::size_t>(FindPage(form(id))));
}

void DockingPanes::activateNext(bool backward) {
  const std::size_t count = kPanes.size();
  const auto at = static_cast<std::size_t>(&paneOf(activePane()) - kPanes.data());
  const Pane& next = kPanes.at((at + (backward ? count - 1 : 1)) % count);
  activate(next.id);
  form(next.id)->SetFocus();
}

void DockingPanes::onKey(wxKeyEvent& event) {
  if (event.GetKeyCode() != WXK_TAB || !event.RawControlDown() || event.AltDown()) {
    event.Skip();
  } else if (GetPageCount() == kPanes.size()) {
    activateNext(event.ShiftDown());
  }
}

int DockingPanes::activePane() const {
  const int page = GetSelection();
  return page == wxNOT_FOUND ? 0 : kPanes.at(static_cast<std::size_t>(page)).id;
}

wxAuiTabCtrl* DockingPanes::tabsOf(int id) {
  wxAuiTabCtrl* tabs = nullptr;
  int index = 0;
  FindTab(form(id), &tabs, &index);
  return tabs;
}

PaneLayout DockingPanes::layout() {
  PaneLayout layout;
  std::vector<wxAuiTabCtrl*> seen;
  for (const Pane& pane : kPanes) {
    wxAuiTabCtrl* const tabs = tabsOf(pane.id);
    if (std::find(seen.begin(), seen.end(), tabs) != seen.end()) continue;
    seen.push_back(tabs);
    PaneGroup group;
    for (std::size_t i = 0; i < tabs->GetPageCount(); ++i)
      group.panes.push_back(idOf(tabs->GetPage(i).window));
    const int shown = tabs->GetActivePage();
    group.shown = group.panes.at(static_cast<std::size_t>(std::max(shown, 0)));
    m_mgr.GetPane(GetTabFrameFromTabCtrl(tabs)).Name(groupName(layout.groups.size()));
    layout.groups.push_back(group);
  }
  if (layout.groups.size() > 1) layout.places = m_mgr.SavePerspective().utf8_string();
  return layout;
}

void DockingPanes::moveTo(int id, wxAuiTabCtrl* group) {
  wxAuiTabCtrl* const from = tabsOf(id);
  wxWindow* const page = form(id);
  wxAuiNotebookPage info = from->GetPage(static_cast<std::size_t>(from->GetIdxFromWindow(page)));
  info.active = false;
  from->RemovePage(page);
  group->AddPage(page, info);
}

/// Moves all panes into one group, in their original order.
void DockingPanes::gather() {
  wxAuiTabCtrl* const first = tabsOf(kPanes.front().id);
  for (const Pane& pane : kPanes) moveTo(pane.id, first);
  RemoveEmptyTabFrames();
  wxWindow* const frame = GetTabFrameFromTabCtrl(first);
  m_mgr.DetachPane(frame);
  m_mgr.AddPane(frame, wxAuiPaneInfo().Centre().CaptionVisible(false));
}

/// Arranges the groups as `places` says; false if one of them is lost.
bool DockingPanes::placeGroups(const std::string& places, std::size_t groups) {
  if (!m_mgr.LoadPerspective(wxString::FromUTF8(places), false)) return false;
  for (std::size_t g = 0; g < groups; ++g) {
    const wxAuiPaneInfo& group = m_mgr.GetPane(groupName(g));
    if (!group.IsOk() || !group.IsShown() || !group.IsDocked()) return false;
  }
  return true;
}

void DockingPanes::setLayout(const PaneLayout& layout) {
  const int active = activePane();
  Freeze();
  gather();
  for (std::size_t g = 0; g < layout.groups.size(); ++g) {
    const PaneGroup& group = layout.groups[g];
    const int opener = group.panes.front();
    // A split creates a group with one pane; the others are moved into it in the order of the tabs.
    if (g > 0) Split(static_cast<std::size_t>(FindPage(form(opener))), wxRIGHT);
    wxAuiTabCtrl* const tabs = tabsOf(opener);
    for (const int id : group.panes) moveTo(id, tabs);
    m_mgr.GetPane(GetTabFrameFromTabCtrl(tabs)).Name(groupName(g));
  }
  const bool placed = layout.groups.size() == 1 || placeGroups(layout.places, layout.groups.size());
  if (!placed) gather();
  m_mgr.Update();
  Thaw();
  if (placed) {
    for (const PaneGroup& group : layout.groups) activate(group.shown);
  }
  if (active != 0) activate(active);
  DoSizing();
}

void DockingPanes::showMenu() {
  wxMenu menu;
  const int reset = menu.Append(wxID_ANY, "&Put Panes Back")->GetId();
  if (GetPopupMenuSelectionFromUser(menu) == reset) resetLayout();
}

}  // namespace quillmoor
