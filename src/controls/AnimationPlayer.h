// Plays a small AVI file over and over, without sound.
#pragma once

#include <wx/bitmap.h>
#include <wx/control.h>
#include <wx/timer.h>

#include <cstddef>
#include <string>
#include <vector>

#include "controls/AviReader.h"

namespace quillmoor {

/// Frames are fitted into the control with their proportions. The colour of the first frame's upper left
/// corner is transparent. Files are drawn for a screen at 200 %: at 100 % the best size is half a frame's. It
/// is decoration: it takes no focus, and screen readers pass it over.
class AnimationPlayer : public wxControl {
 public:
  explicit AnimationPlayer(wxWindow* parent, wxWindowID id = wxID_ANY,
                           const wxPoint& position = wxDefaultPosition, const wxSize& size = wxDefaultSize);

  /// Stops, loads a file and shows its first frame; returns whether it could. A missing or
  /// damaged file shows nothing and raises nothing: what is wrong is in `error()`.
  bool Open(const std::string& path);
  /// Plays from the first frame, again and again. Nothing without a file.
  void Play();
  /// Stops and goes back to the first frame.
  void Stop();
  bool IsPlaying() const { return timer_.IsRunning(); }
  /// Shows nothing any more.
  void Close();
  const std::string& error() const { return error_; }

  bool AcceptsFocus() const override { return false; }

 protected:
  wxSize DoGetBestClientSize() const override;

 private:
  void paint();
  wxRect picturesPlace() const;
  const wxBitmap& scaled(std::size_t frame, wxSize size);

  AviAnimation animation_;
  std::string error_;
  std::size_t frame_ = 0;
  wxTimer timer_;
  std::vector<wxBitmap> scaled_;  // frames in the size now shown, made when they are first needed
  wxSize scaledSize_;
};

}  // namespace quillmoor
