#include "controls/QuickPaint.h"

#include <gtk/gtk.h>
#include <wx/dc.h>
#include <wx/eventfilter.h>
#include <wx/graphics.h>
#include <wx/region.h>
#include <wx/window.h>

#include <algorithm>

namespace quillmoor {
namespace {

/// Drops paint events of covered windows. Child windows have no surface of their own here, so a paint of one
/// also paints all its parents, from the frame down; a parent covered there by a child has nothing to draw.
class CoveredPaints final : public wxEventFilter {
 public:
  CoveredPaints() { wxEvtHandler::AddFilter(this); }
  ~CoveredPaints() override { wxEvtHandler::RemoveFilter(this); }
  CoveredPaints(const CoveredPaints&) = delete;
  CoveredPaints& operator=(const CoveredPaints&) = delete;

  int FilterEvent(wxEvent& event) override {
    if (event.GetEventType() != wxEVT_PAINT) return Event_Skip;
    const auto* const window = dynamic_cast<const wxWindow*>(event.GetEventObject());
    if (window == nullptr) return Event_Skip;
    const wxRect drawn = window->GetUpdateRegion().GetBox();
    const wxWindowList& children = window->GetChildren();
    const bool covered = std::any_of(children.begin(), children.end(), [&](const wxWindow* child) {
      return child->IsShown() && !child->IsTopLevel() && child->GetRect().Contains(drawn);
    });
    return covered ? Event_Processed : Event_Skip;
  }
};

}  // namespace

void PaintQuickly(wxWindow& window) {
  static const CoveredPaints covered;
  // Overlay scroll bars fade in and out at every change, with sixty redraws a second.
  if (GTK_IS_SCROLLED_WINDOW(window.GetHandle()))
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(window.GetHandle()), FALSE);
  for (wxWindow* at = &window; at != nullptr; at = at->GetParent()) {
    // For a window without its own font, every drawing context creates a widget to find the default one.
    at->SetOwnFont(at->GetFont());
    // Erase events, each of which would create a context, are not used.
    if (at->GetBackgroundStyle() == wxBG_STYLE_ERASE) at->SetBackgroundStyle(wxBG_STYLE_SYSTEM);
  }
}

void DrawTextQuickly(wxDC& dc, const wxString& text, int x, int y) {
  // wxDC would lay the text out a second time to update its bounding box.
  if (wxGraphicsContext* const direct = dc.GetGraphicsContext()) {
    direct->DrawText(text, x, y);
  } else {
    dc.DrawText(text, x, y);
  }
}

}  // namespace quillmoor
