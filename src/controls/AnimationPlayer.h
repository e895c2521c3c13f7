// Plays a small AVI file in a loop, without sound.
#pragma once

#include <wx/bitmap.h>
#include <wx/control.h>
#include <wx/timer.h>

#include <cstddef>
#include <string>
#include <vector>

#include "controls/AviReader.h"

namespace quillmoor {

/// Frames are scaled to fit the control and keep their proportions. The colour of the first frame's upper
/// left corner is transparent. Files are drawn for a screen at 200 %: at 100 % the best size is half a
/// frame's. The control is decoration: it takes no focus, and screen readers skip it.
class AnimationPlayer : public wxControl {
 public:
  explicit AnimationPlayer(wxWindow* parent, wxWindowID id = wxID_ANY,
                           const wxPoint& position = wxDefaultPosition, const wxSize& size = wxDefaultSize);

  /// Stops, loads a file and shows its first frame; returns whether that worked. A missing or damaged file
  /// shows nothing and raises nothing; see `error()`.
  bool Open(const std::string& path);
  /// Plays from the first frame in a loop. Does nothing without a file.
  void Play();
  /// Stops and returns to the first frame.
  void Stop();
  bool IsPlaying() const { return timer_.IsRunning(); }
  /// Unloads the file; the control is then empty.
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
  std::vector<wxBitmap> scaled_;  // frames in the current size, made on demand
  wxSize scaledSize_;
};

}  // namespace quillmoor
