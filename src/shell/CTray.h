// The program's icon in the notification area.
#pragma once

#include <wx/menu.h>
#include <wx/statbmp.h>

#include <functional>
#include <memory>
#include <string>

#include "shell/TrayTip.h"

namespace quillmoor {

class CTray {
 public:
  CTray();
  /// Removes the icon.
  ~CTray();
  CTray(const CTray&) = delete;
  CTray& operator=(const CTray&) = delete;

  /// Has the desktop a notification area now?
  static bool isAvailable();

  /// The picture box whose image is the icon. It must outlive this or be replaced; nullptr for none.
  void SetHost(wxStaticBitmap* host);
  /// The image of the host has changed.
  void hostPictureChanged();

  const std::string& Tip() const { return tip_; }
  /// What is longer than kLongestTip is cut.
  void SetTip(const std::string& text);

  /// Adds the icon, false without a host. The icon is added again by itself when the notification area has
  /// been away. Without a notification area nothing is seen.
  bool Show();
  void Remove();

  /// Pops up a menu at the pointer and returns when it is closed.
  void popUp(wxMenu& menu);

  // Events; any may be empty. Every action of the mouse raises MouseMove first (button, shift, x, y), then
  // the event of the action, unless another event is still being handled: then neither.
  std::function<void(int button, int shift, int x, int y)> MouseMove;
  std::function<void()> LButtonDown, LButtonUp, LButtonDblClk, RButtonDown, RButtonUp, RButtonDblClk;

  /// What the system reports: a number of a mouse message, 512 for a move, 513 to 518 for the buttons.
  void mouseMessage(int message);
  /// An event is being handled.
  bool handling() const { return handling_; }

 private:
  class Icon;

  void modify();

  std::unique_ptr<Icon> icon_;
  wxStaticBitmap* host_ = nullptr;
  std::string tip_;
  bool shown_ = false;
  bool handling_ = false;
};

}  // namespace quillmoor
