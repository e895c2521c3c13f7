// The program's own progress bar, drawn with a gradient.
#pragma once

#include <wx/colour.h>
#include <wx/control.h>

#include "controls/ProgressBar.h"

namespace quillmoor {

/// The seven properties are those of ProgressBar. Takes no focus. Screen readers get the name "Progress" and,
/// if the platform supports it, the percentage.
class xpProgressBar : public wxControl {
 public:
  explicit xpProgressBar(wxWindow* parent, wxWindowID id = wxID_ANY,
                         const wxPoint& position = wxDefaultPosition, const wxSize& size = wxDefaultSize);

  wxColour GetColor() const;
  void SetColor(const wxColour& color);
  int GetMax() const { return bar_.max(); }
  void SetMax(int max);
  int GetMin() const { return bar_.min(); }
  void SetMin(int min);
  BarOrientation GetOrientation() const { return bar_.orientation; }
  void SetOrientation(BarOrientation orientation);
  BarScrolling GetScrolling() const { return bar_.scrolling; }
  void SetScrolling(BarScrolling scrolling);
  bool GetShowText() const { return bar_.showText; }
  void SetShowText(bool show);
  int GetValue() const { return bar_.value(); }
  /// Cheap when nothing visible changes, so that it may be called for every block of a transfer.
  void SetValue(int value);
  /// "45%"
  wxString GetText() const { return wxString::FromUTF8(bar_.text()); }

  bool AcceptsFocus() const override { return false; }

 protected:
  wxSize DoGetBestClientSize() const override;

 private:
  void changed();
  void paint();

  ProgressBar bar_;
};

}  // namespace quillmoor
