// Shows the run log: coloured lines that can be scrolled, selected and copied.
//
// Draws only the visible lines, because a run of small files writes tens of thousands of lines a second,
// which is too fast for the rich-text controls of the toolkits.
#pragma once

#include <wx/scrolwin.h>
#include <wx/timer.h>

#include <cstddef>
#include <string>
#include <utility>

#include "controls/ColourMath.h"
#include "engine/LogText.h"

namespace quillmoor {

class LogView : public wxScrolled<wxWindow> {
 public:
  /// `log` must outlive this.
  LogView(wxWindow* parent, const LogText& log, const wxString& name, const wxString& spokenName);

  /// To be called when the log has grown; may be called for every line. Scrolls to the newest line within
  /// kShowEvery.
  void logChanged();
  /// The same, at once.
  void showNewest();
  /// Scrolls to a line and selects it. Lines are counted from the first ever appended (LogText::firstLine);
  /// in place of a dropped line the oldest one left is shown.
  void showLine(std::size_t number);

  bool hasSelection() const { return anchor_ != caret_; }
  std::string selectedText() const;
  void selectAll();
  void copy() const;

  static constexpr int kShowEvery = 250;  // milliseconds

 private:
  /// A position between two characters. Lines are counted from the first ever appended, so that it stays
  /// valid when the start of the log is dropped.
  struct TextPosition {
    std::size_t line = 0;
    std::size_t byte = 0;
    auto operator<=>(const TextPosition&) const = default;
  };

  void measure();
  int shownLines() const;
  void updateExtent();
  void paint();
  void drawLine(wxDC& dc, std::size_t index, int y, int left);
  void drawText(wxDC& dc, const LogLine& line, std::size_t begin, std::size_t end, int x, int y,
                const wxColour* ink);
  std::pair<TextPosition, TextPosition> selection() const;
  TextPosition placeAt(wxPoint point) const;
  TextPosition end() const;
  int widthOf(const LogLine& line, std::size_t bytes) const;
  void onMouse(wxMouseEvent& event);
  void onKey(wxKeyEvent& event);
  void showMenu();

  const LogText& log_;
  wxTimer timer_;
  TextPosition anchor_, caret_;
  bool selecting_ = false;
  bool follow_ = false;  // scroll to the newest line at the next update
  bool atEnd_ = false;   // the newest line was visible at the last paint
  int lineHeight_ = 1;
  int characterWidth_ = 1;
  int margin_ = 0;
  std::size_t widest_ = 0;  // bytes of the widest line drawn so far
};

}  // namespace quillmoor
