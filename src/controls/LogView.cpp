#include "controls/LogView.h"

#include <wx/clipbrd.h>
#include <wx/dcbuffer.h>
#include <wx/menu.h>
#include <wx/settings.h>

#include <algorithm>

#include "controls/AccessibleName.h"
#include "controls/QuickPaint.h"
#include "controls/WxColours.h"

namespace quillmoor {
namespace {

constexpr std::size_t kLongestDrawn = 4096;  // bytes of one line; the rest is not drawn

/// Black is the default colour of log texts; on a dark background the theme's text colour replaces it.
Rgb shownOn(Rgb given, Rgb background) {
  return given == Rgb{} && InkOn(background) != Rgb{}
             ? FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT))
             : ShownOn(given, background);
}

wxString textOf(const std::string& utf8, std::size_t begin, std::size_t end) {
  return wxString::FromUTF8(utf8.data() + begin, end - begin);
}

std::size_t drawnBytes(const LogLine& line) {
  std::size_t bytes = std::min(line.text.size(), kLongestDrawn);
  while (bytes > 0 && bytes < line.text.size() &&
         (static_cast<unsigned char>(line.text[bytes]) & 0xC0) == 0x80)
    --bytes;
  return bytes;
}

}  // namespace

LogView::LogView(wxWindow* parent, const LogText& log, const wxString& name, const wxString& spokenName)
    : log_(log) {
  SetBackgroundStyle(wxBG_STYLE_PAINT);
  Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
         wxHSCROLL | wxVSCROLL | wxBORDER_THEME | wxWANTS_CHARS, name);
  SetAccessibleName(*this, spokenName);
  SetCursor(wxCursor(wxCURSOR_IBEAM));
  measure();
  SetInitialSize(wxSize(20 * characterWidth_, 4 * lineHeight_));
  timer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { showNewest(); });
  Bind(wxEVT_PAINT, [this](wxPaintEvent&) { paint(); });
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    const bool newest = (follow_ || atEnd_) && !selecting_;
    if (follow_) showNewest();
    // A scroll bar that has appeared because of a long line must not cover the newest line.
    if (newest) CallAfter([this] { Scroll(-1, static_cast<int>(log_.lineCount())); });
    Refresh(false);
    event.Skip();
  });
  for (const auto& type : {wxEVT_LEFT_DOWN, wxEVT_LEFT_UP, wxEVT_MOTION, wxEVT_LEFT_DCLICK})
    Bind(type, &LogView::onMouse, this);
  Bind(wxEVT_MOUSE_CAPTURE_LOST, [this](wxMouseCaptureLostEvent&) { selecting_ = false; });
  Bind(wxEVT_KEY_DOWN, &LogView::onKey, this);
  Bind(wxEVT_CONTEXT_MENU, [this](wxContextMenuEvent&) { showMenu(); });
  for (const auto& type : {wxEVT_SET_FOCUS, wxEVT_KILL_FOCUS}) {
    Bind(type, [this](wxFocusEvent& event) {
      Refresh(false);
      event.Skip();
    });
  }
  Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
    Refresh(false);
    event.Skip();
  });
  Bind(wxEVT_DPI_CHANGED, [this](wxDPIChangedEvent& event) {
    measure();
    updateExtent();
    event.Skip();
  });
}

void LogView::measure() {
  const wxFont system = wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT);
  SetFont(wxFontInfo(system.GetFractionalPointSize()).Family(wxFONTFAMILY_TELETYPE));
  const wxSize one = GetTextExtent("0");
  lineHeight_ = std::max(1, one.y + FromDIP(1));
  characterWidth_ = std::max(1, one.x);
  margin_ = FromDIP(4);
}

void LogView::logChanged() {
  follow_ = true;
  if (!timer_.IsRunning()) timer_.StartOnce(kShowEvery);
}

void LogView::showNewest() {
  timer_.Stop();
  updateExtent();
  // The log must not scroll while the user selects text.
  if (follow_ && !selecting_) {
    follow_ = false;
    Scroll(0, static_cast<int>(log_.lineCount()));
  }
  Refresh(false);
}

void LogView::showLine(std::size_t number) {
  timer_.Stop();
  follow_ = atEnd_ = false;
  updateExtent();
  const std::size_t index = std::min(number - std::min(number, log_.firstLine()), log_.lineCount() - 1);
  anchor_ = {log_.firstLine() + index, 0};
  caret_ = {anchor_.line, log_.line(index).text.size()};
  Scroll(0, static_cast<int>(index));
  Refresh(false);
}

/// An empty last line is not counted.
int LogView::shownLines() const {
  const std::size_t lines = log_.lineCount();
  return static_cast<int>(log_.line(lines - 1).text.empty() && lines > 1 ? lines - 1 : lines);
}

void LogView::updateExtent() {
  const int width = 2 * margin_ + static_cast<int>(std::min(widest_, kLongestDrawn)) * characterWidth_;
  SetScrollRate(characterWidth_, lineHeight_);
  SetVirtualSize(width, shownLines() * lineHeight_);
}

void LogView::paint() {
  wxAutoBufferedPaintDC dc(this);
  const wxColour background = wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW);
  dc.SetBackground(background);
  dc.Clear();
  dc.SetFont(GetFont());
  dc.SetBackgroundMode(wxBRUSHSTYLE_TRANSPARENT);
  const wxPoint start = GetViewStart();
  const wxSize size = GetClientSize();
  const std::size_t before = widest_;
  atEnd_ = start.y + size.y / lineHeight_ >= shownLines();
  auto index = static_cast<std::size_t>(std::max(0, start.y));
  for (int y = 0; y < size.y && index < log_.lineCount(); y += lineHeight_, ++index) {
    drawLine(dc, index, y, margin_ - start.x * characterWidth_);
    widest_ = std::max(widest_, log_.line(index).text.size());
  }
  if (widest_ != before) CallAfter([this] { updateExtent(); });
}

std::pair<LogView::TextPosition, LogView::TextPosition> LogView::selection() const {
  return std::minmax(anchor_, caret_);
}

LogView::TextPosition LogView::end() const {
  const std::size_t last = log_.lineCount() - 1;
  return {log_.firstLine() + last, log_.line(last).text.size()};
}

void LogView::drawLine(wxDC& dc, std::size_t index, int y, int left) {
  const LogLine& line = log_.line(index);
  const std::size_t bytes = drawnBytes(line);
  drawText(dc, line, 0, bytes, left, y, nullptr);

  const auto [first, last] = selection();
  const std::size_t number = log_.firstLine() + index;
  if (first == last || number < first.line || number > last.line) return;
  const std::size_t begin = number == first.line ? std::min(first.byte, bytes) : 0;
  const std::size_t end = number == last.line ? std::min(last.byte, bytes) : bytes;
  const int x = left + widthOf(line, begin);
  const int width = left + widthOf(line, end) - x + (number < last.line ? characterWidth_ : 0);
  dc.SetPen(*wxTRANSPARENT_PEN);
  dc.SetBrush(wxSystemSettings::GetColour(wxSYS_COLOUR_HIGHLIGHT));
  dc.DrawRectangle(x, y, width, lineHeight_);
  const wxColour ink = wxSystemSettings::GetColour(wxSYS_COLOUR_HIGHLIGHTTEXT);
  drawText(dc, line, begin, end, x, y, &ink);
}

/// Draws the bytes from `begin` to `end` in `ink`, or in the line's own colours if that is null.
void LogView::drawText(wxDC& dc, const LogLine& line, std::size_t begin, std::size_t end, int x, int y,
                       const wxColour* ink) {
  const Rgb background = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
  for (std::size_t r = 0; r < line.runs.size(); ++r) {
    const std::size_t runEnd = r + 1 < line.runs.size() ? line.runs[r + 1].begin : line.text.size();
    const std::size_t from = std::max(line.runs[r].begin, begin);
    const std::size_t to = std::min(runEnd, end);
    if (from >= to) continue;
    const Colour& colour = line.runs[r].colour;
    const Rgb given{colour.red, colour.green, colour.blue};
    dc.SetTextForeground(ink ? *ink : ToWx(shownOn(given, background)));
    const wxString text = textOf(line.text, from, to);
    DrawTextQuickly(dc, text, x, y);
    if (to < end) x += dc.GetTextExtent(text).x;
  }
}

int LogView::widthOf(const LogLine& line, std::size_t bytes) const {
  return bytes == 0 ? 0 : GetTextExtent(textOf(line.text, 0, bytes)).x;
}

LogView::TextPosition LogView::placeAt(wxPoint point) const {
  const wxPoint start = GetViewStart();
  const int row = start.y + (point.y < 0 ? -1 : point.y / lineHeight_);
  const auto index = static_cast<std::size_t>(std::clamp(row, 0, static_cast<int>(log_.lineCount()) - 1));
  const LogLine& line = log_.line(index);
  const wxString text = textOf(line.text, 0, drawnBytes(line));
  wxArrayInt widths;
  wxClientDC dc(const_cast<LogView*>(this));
  dc.SetFont(GetFont());
  dc.GetPartialTextExtents(text, widths);
  const int x = point.x - margin_ + start.x * characterWidth_;
  std::size_t characters = 0;
  int before = 0;
  while (characters < widths.size() && (before + widths[characters]) / 2 < x) before = widths[characters++];
  return {log_.firstLine() + index, text.Left(characters).utf8_str().length()};
}

void LogView::onMouse(wxMouseEvent& event) {
  if (event.LeftDown()) {
    SetFocus();
    caret_ = placeAt(event.GetPosition());
    if (!event.ShiftDown()) anchor_ = caret_;
    selecting_ = true;
    if (!HasCapture()) CaptureMouse();
  } else if (event.LeftDClick()) {
    caret_ = placeAt(event.GetPosition());
    anchor_ = {caret_.line, 0};
    caret_.byte = log_.line(caret_.line - log_.firstLine()).text.size();
  } else if (selecting_ && (event.Dragging() || event.LeftUp())) {
    caret_ = placeAt(event.GetPosition());
  }
  if (event.LeftUp()) {
    selecting_ = false;
    if (HasCapture()) ReleaseMouse();
  }
  if (!event.Moving()) Refresh(false);
  event.Skip(event.Moving());
}

void LogView::onKey(wxKeyEvent& event) {
  const int page = std::max(1, GetClientSize().y / lineHeight_ - 1);
  const wxPoint start = GetViewStart();
  switch (event.GetKeyCode()) {
    case WXK_TAB:
      Navigate(event.ShiftDown() ? wxNavigationKeyEvent::IsBackward : wxNavigationKeyEvent::IsForward);
      return;
    case WXK_UP:
      return Scroll(-1, std::max(0, start.y - 1));
    case WXK_DOWN:
      return Scroll(-1, start.y + 1);
    case WXK_LEFT:
      return Scroll(std::max(0, start.x - 4), -1);
    case WXK_RIGHT:
      return Scroll(start.x + 4, -1);
    case WXK_PAGEUP:
      return Scroll(-1, std::max(0, start.y - page));
    case WXK_PAGEDOWN:
      return Scroll(-1, start.y + page);
    case WXK_HOME:
      return Scroll(0, 0);
    case WXK_END:
      return Scroll(0, static_cast<int>(log_.lineCount()));
    case 'A':
      if (event.ControlDown()) return selectAll();
      break;
    case 'C':
    case WXK_INSERT:
      if (event.ControlDown()) return copy();
      break;
    case WXK_F10:
      if (event.ShiftDown()) return showMenu();
      break;
    case WXK_WINDOWS_MENU:
    case WXK_MENU:
      return showMenu();
    default:
      break;
  }
  event.Skip();
}

void LogView::showMenu() {
  wxMenu menu;
  menu.Append(wxID_COPY, "&Copy\tCtrl+C")->Enable(hasSelection());
  menu.Append(wxID_SELECTALL, "Select &All\tCtrl+A");
  menu.Bind(
      wxEVT_MENU, [this](wxCommandEvent&) { copy(); }, wxID_COPY);
  menu.Bind(
      wxEVT_MENU, [this](wxCommandEvent&) { selectAll(); }, wxID_SELECTALL);
  PopupMenu(&menu);
}

void LogView::selectAll() {
  anchor_ = {log_.firstLine(), 0};
  caret_ = end();
  Refresh(false);
}

std::string LogView::selectedText() const {
  const auto [first, last] = selection();
  std::string text;
  for (std::size_t number = std::max(first.line, log_.firstLine()); number <= last.line; ++number) {
    const LogLine& line = log_.line(number - log_.firstLine());
    const std::size_t begin = number == first.line ? std::min(first.byte, line.text.size()) : 0;
    const std::size_t end = number == last.line ? std::min(last.byte, line.text.size()) : line.text.size();
    text.append(line.text, begin, end - std::min(begin, end));
    if (number != last.line) text += '\n';
  }
  return text;
}

void LogView::copy() const {
  if (!hasSelection()) return;
  wxClipboardLocker lock;
  if (!!lock) wxTheClipboard->SetData(new wxTextDataObject(wxString::FromUTF8(selectedText())));
}

}  // namespace quillmoor
