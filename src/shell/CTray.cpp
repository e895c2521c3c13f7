#include "shell/CTray.h"

#include <wx/taskbar.h>

#include "base/BusyFlag.h"
#include "base/Utf8.h"
#include "shell/NotificationIcon.h"

namespace quillmoor {
namespace {

constexpr int kMouseMove = 512, kLButtonDown = 513, kLButtonUp = 514, kLButtonDblClk = 515,
              kRButtonDown = 516, kRButtonUp = 517, kRButtonDblClk = 518;

}  // namespace

class CTray::Icon : public wxTaskBarIcon {
 public:
  explicit Icon(CTray& tray) : tray_(tray) {
    // Some desktops report only two events, both as button presses: activation of the icon, treated here as a
    // double click, and a request for its menu, treated as a release of the right button.
    const bool twoEventsOnly = wxEVT_TASKBAR_CLICK == wxEVT_TASKBAR_RIGHT_DOWN;
    translate(wxEVT_TASKBAR_MOVE, kMouseMove);
    translate(wxEVT_TASKBAR_LEFT_DOWN, twoEventsOnly ? kLButtonDblClk : kLButtonDown);
    translate(wxEVT_TASKBAR_LEFT_UP, kLButtonUp);
    translate(wxEVT_TASKBAR_LEFT_DCLICK, kLButtonDblClk);
    translate(wxEVT_TASKBAR_RIGHT_DOWN, twoEventsOnly ? kRButtonUp : kRButtonDown);
    translate(wxEVT_TASKBAR_RIGHT_UP, kRButtonUp);
    translate(wxEVT_TASKBAR_RIGHT_DCLICK, kRButtonDblClk);
  }

 private:
  void translate(wxEventType type, int message) {
    Bind(wxEventTypeTag<wxTaskBarIconEvent>(type),
         [this, message](wxTaskBarIconEvent&) { tray_.mouseMessage(message); });
  }

  CTray& tray_;
};

CTray::CTray() : icon_(std::make_unique<Icon>(*this)) {
  ShowNotificationsAt(icon_.get());
}

CTray::~CTray() {
  ShowNotificationsAt(nullptr);
  Remove();
}

bool CTray::isAvailable() {
  return wxTaskBarIcon::IsAvailable();
}

void CTray::SetHost(wxStaticBitmap* host) {
  host_ = host;
  hostPictureChanged();
}

void CTray::hostPictureChanged() {
  if (shown_) modify();
}

void CTray::SetTip(const std::string& text) {
  const std::string tip = FirstCharacters(text, kLongestTip);
  if (tip_ == tip) return;
  tip_ = tip;
  if (shown_) modify();
}

bool CTray::Show() {
  if (!host_) return false;
  shown_ = true;
  modify();
  return true;
}

void CTray::modify() {
  if (host_) icon_->SetIcon(wxBitmapBundle(host_->GetBitmap()), wxString::FromUTF8(tip_));
}

void CTray::Remove() {
  if (!shown_) return;
  shown_ = false;
  icon_->RemoveIcon();
}

void CTray::popUp(wxMenu& menu) {
  icon_->PopupMenu(&menu);
}

void CTray::mouseMessage(int message) {
  const BusyFlag handling(handling_);
  if (!handling.taken()) return;
  if (MouseMove) {
    const wxPoint pointer = wxGetMousePosition();
    MouseMove(0, 0, pointer.x, pointer.y);
  }
  const std::function<void()>* event = nullptr;
  switch (message) {
    case kLButtonDown:
      event = &LButtonDown;
      break;
    case kLButtonUp:
      event = &LButtonUp;
      break;
    case kLButtonDblClk:
      event = &LButtonDblClk;
      break;
    case kRButtonDown:
      event = &RButtonDown;
      break;
    case kRButtonUp:
      event = &RButtonUp;
      break;
    case kRButtonDblClk:
      event = &RButtonDblClk;
      break;
    default:
      return;
  }
  if (*event) (*event)();
}

}  // namespace quillmoor
