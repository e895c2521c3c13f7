#include "controls/AnimationPlayer.h"

#include <wx/dcclient.h>
#include <wx/image.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillmoor {
namespace {

/// Device-independent size before a file is open: the size of the run's animation.
constexpr int kWidth = 272;
constexpr int kHeight = 60;

/// The largest size with the frame's proportions that fits.
wxSize fitted(int width, int height, wxSize room) {
  const double scale = std::min(static_cast<double>(room.x) / width, static_cast<double>(room.y) / height);
  return {std::max(static_cast<int>(width * scale), 1), std::max(static_cast<int>(height * scale), 1)};
}

/// The frame as an image in which pixels of the corner's colour are transparent.
wxImage withTransparency(const AviAnimation& animation, std::size_t frame) {
  wxImage image(animation.width, animation.height, false);
  image.InitAlpha();
  const std::vector<std::uint8_t>& pixels = animation.frames[frame];
  const auto* around = animation.frames[0].data();
  std::copy(pixels.begin(), pixels.end(), image.GetData());
  unsigned char* alpha = image.GetAlpha();
  for (std::size_t i = 0; i < pixels.size(); i += 3)
    alpha[i / 3] = std::equal(around, around + 3, &pixels[i]) ? wxALPHA_TRANSPARENT : wxALPHA_OPAQUE;
  return image;
}

}  // namespace

AnimationPlayer::AnimationPlayer(wxWindow* parent, wxWindowID id, const wxPoint& position, const wxSize& size)
    : timer_(this) {
  Create(parent, id, position, size, wxBORDER_NONE | wxFULL_REPAINT_ON_RESIZE, wxDefaultValidator,
         "AnimationPlayer");
  SetDoubleBuffered(true);
  Bind(wxEVT_PAINT, [this](wxPaintEvent&) { paint(); });
  Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    if (animation_.frames.empty()) return;  // closed before a pending tick
    frame_ = (frame_ + 1) % animation_.frames.size();
    if (IsShownOnScreen()) RefreshRect(picturesPlace());
  });
}

bool AnimationPlayer::Open(const std::string& path) {
  const AviAnimation before = std::exchange(animation_, {});
  std::vector<wxBitmap> scaled = std::exchange(scaled_, {});
  Close();
  try {
    animation_ = LoadAvi(path);
    if (animation_.frames == before.frames) scaled_ = std::move(scaled);  // each run reopens the same file
  } catch (const AviError& error) {
    error_ = error.what();
  }
  InvalidateBestSize();
  return error_.empty();
}

void AnimationPlayer::Play() {
  if (animation_.frames.empty()) return;
  frame_ = 0;
  timer_.Start(
      static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(animation_.perFrame).count()));
  Refresh();
}

void AnimationPlayer::Stop() {
  timer_.Stop();
  frame_ = 0;
  Refresh();
}

void AnimationPlayer::Close() {
  timer_.Stop();
  animation_ = {};
  error_.clear();
  scaled_.clear();
  frame_ = 0;
  Refresh();
}

wxSize AnimationPlayer::DoGetBestClientSize() const {
  if (animation_.frames.empty()) return FromDIP(wxSize(kWidth, kHeight));
  return FromDIP(wxSize(animation_.width, animation_.height) / 2);
}

const wxBitmap& AnimationPlayer::scaled(std::size_t frame, wxSize size) {
  if (scaledSize_ != size || scaled_.size() != animation_.frames.size()) {
    scaled_.assign(animation_.frames.size(), wxBitmap());
    scaledSize_ = size;
  }
  if (!scaled_[frame].IsOk()) {
    wxImage image = withTransparency(animation_, frame);
    const double scale = GetContentScaleFactor();
    const wxSize pixels = size * scale;
    if (image.GetSize() != pixels) image.Rescale(pixels.x, pixels.y, wxIMAGE_QUALITY_HIGH);
    scaled_[frame] = wxBitmap(image, wxBITMAP_SCREEN_DEPTH, scale);
  }
  return scaled_[frame];
}

wxRect AnimationPlayer::picturesPlace() const {
  const wxSize room = GetClientSize();
  if (animation_.frames.empty() || room.x <= 0 || room.y <= 0) return {};
  return wxRect(fitted(animation_.width, animation_.height, room)).CentreIn(wxRect(room));
}

void AnimationPlayer::paint() {
  wxPaintDC dc(this);  // draws over the background, which the system has drawn
  const wxRect place = picturesPlace();
  if (!place.IsEmpty()) dc.DrawBitmap(scaled(frame_, place.GetSize()), place.GetPosition(), true);
}

}  // namespace quillmoor
