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

/// Windows here have no place of their own on the screen: what is drawn is drawn by all that it lies in as
/// well, from the frame down. One that a child covers there has nothing to draw.
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
  // Scroll bars that lie over a list fade in and out with each of its changes, at sixty steps a second.
  if (GTK_IS_SCROLLED_WINDOW(window.GetHandle()))
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(window.GetHandle()), FALSE);
  for (wxWindow* at = &window; at != nullptr; at = at->GetParent()) {
    // Of a window without a font of its own every drawing context asks what it is, by making a widget to look
    // at.
    at->SetOwnFont(at->GetFont());
    // Nobody draws in erase events, for each of which a context would be made.
    if (at->GetBackgroundStyle() == wxBG_STYLE_ERASE) at->SetBackgroundStyle(wxBG_STYLE_SYSTEM);
  }
}

void DrawTextQuickly(wxDC& dc, const wxString& text, int x, int y) {
  // The context itself would lay the text out a second time, to know how far the drawing reaches.
  if (wxGraphicsContext* const direct = dc.GetGraphicsContext()) {
    direct->DrawText(text, x, y);
  } else {
    dc.DrawText(text, x, y);
  }
}

}  // namespace quillmoor
