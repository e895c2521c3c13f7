#include "controls/xpProgressBar.h"

#include <wx/dcclient.h>
#include <wx/settings.h>

#include "controls/AccessibleName.h"
#include "controls/WxColours.h"

namespace quillmoor {
namespace {

// Device-independent pixels.
constexpr int kThickness = 18;
constexpr int kLength = 160;
constexpr int kBlockLength = 9;
constexpr int kBlockGap = 2;
constexpr int kRadius = 3;

}  // namespace

xpProgressBar::xpProgressBar(wxWindow* parent, wxWindowID id, const wxPoint& position, const wxSize& size) {
  Create(parent, id, position, size, wxBORDER_NONE | wxFULL_REPAINT_ON_RESIZE, wxDefaultValidator,
         "xpProgressBar");
  SetDoubleBuffered(true);
  SetAccessibleName(*this, "Progress", AccessibleRole::progressBar, [this] { return GetText(); });
  Bind(wxEVT_PAINT, [this](wxPaintEvent&) { paint(); });
}

wxColour xpProgressBar::GetColor() const {
  return ToWx(bar_.color);
}

void xpProgressBar::SetColor(const wxColour& color) {
  bar_.color = FromWx(color);
  changed();
}

void xpProgressBar::SetMax(int max) {
  bar_.setMax(max);
  changed();
}

void xpProgressBar::SetMin(int min) {
  bar_.setMin(min);
  changed();
}

void xpProgressBar::SetOrientation(BarOrientation orientation) {
  bar_.orientation = orientation;
  InvalidateBestSize();
  changed();
}

void xpProgressBar::SetScrolling(BarScrolling scrolling) {
  bar_.scrolling = scrolling;
  changed();
}

void xpProgressBar::SetShowText(bool show) {
  bar_.showText = show;
  changed();
}

void xpProgressBar::SetValue(int value) {
  const int before = bar_.value();
  bar_.setValue(value);
  if (bar_.value() != before) changed();
}

void xpProgressBar::changed() {
  Refresh(false);
}

wxSize xpProgressBar::DoGetBestClientSize() const {
  const wxSize size = FromDIP(wxSize(kLength, kThickness));
  return bar_.orientation == BarOrientation::vertical ? wxSize(size.y, size.x) : size;
}

void xpProgressBar::paint() {
  wxPaintDC dc(this);  // the background shows at the corners
  const wxSize size = GetClientSize();
  const Rgb window = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
  const Rgb ink = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));

  const int line = FromDIP(1);
  const int radius = FromDIP(kRadius);
  dc.SetPen(wxPen(ToWx(Mix(window, ink, 0.35)), line));
  dc.SetBrush(wxBrush(ToWx(Mix(window, ink, 0.06))));
  dc.DrawRoundedRectangle(line / 2, line / 2, size.x - line / 2 * 2, size.y - line / 2 * 2, radius);

  const int margin = 2 * line;
  const BarRect inside{margin, margin, size.x - 2 * margin, size.y - 2 * margin};
  const auto parts = FilledParts(bar_, inside, FromDIP(kBlockLength), FromDIP(kBlockGap));
  const auto stops = BarGradient(IsThisEnabled() ? bar_.color : Mix(bar_.color, window, 0.6));
  const bool vertical = bar_.orientation == BarOrientation::vertical;
  const int across = vertical ? inside.width : inside.height;
  for (int i = 0; i < across; ++i) {
    dc.SetPen(wxPen(ToWx(GradientAt(stops, across > 1 ? static_cast<double>(i) / (across - 1) : 0.5))));
    for (const BarRect& part : parts) {
      if (vertical) {
        dc.DrawLine(part.x + i, part.y, part.x + i, part.y + part.height);
      } else {
        dc.DrawLine(part.x, part.y + i, part.x + part.width, part.y + i);
      }
    }
  }
  if (!bar_.showText) return;

  // The text may be partly on the filled area and partly beside it: each part is drawn in a readable colour.
  const wxString text = GetText();
  dc.SetFont(GetFont());
  const wxSize extent = dc.GetTextExtent(text);
  const wxPoint at((size.x - extent.x) / 2, (size.y - extent.y) / 2);
  dc.SetTextForeground(ToWx(ink));
  dc.DrawText(text, at);
  if (parts.empty()) return;
  BarRect filled = parts.front();
  if (vertical) {
    filled.height = filled.y + filled.height - parts.back().y;
    filled.y = parts.back().y;
  } else {
    filled.width = parts.back().x + parts.back().width - filled.x;
  }
  wxDCClipper clip(dc, filled.x, filled.y, filled.width, filled.height);
  dc.SetTextForeground(ToWx(InkOn(GradientAt(stops, 0.5))));
  dc.DrawText(text, at);
}

}  // namespace quillmoor
