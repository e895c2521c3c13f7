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

  /// Whether the desktop currently has a notification area.
  static bool isAvailable();

  /// Sets the picture box whose image is the icon. It must outlive this or be replaced; nullptr for none.
  void SetHost(wxStaticBitmap* host);
  /// To be called when the host's image has changed.
  void hostPictureChanged();

  const std::string& Tip() const { return tip_; }
  /// Cut to kLongestTip characters.
  void SetTip(const std::string& text);

  /// Adds the icon; false without a host. When the notification area disappears and returns, the icon is
  /// added again automatically. Without a notification area nothing is visible.
  bool Show();
  void Remove();

  /// Opens a menu at the pointer and returns when it is closed.
  void popUp(wxMenu& menu);

  // Events; any may be empty. Every mouse action raises MouseMove (button, shift, x, y) and then its own
  // event, or neither while another event is being handled.
  std::function<void(int button, int shift, int x, int y)> MouseMove;
  std::function<void()> LButtonDown, LButtonUp, LButtonDblClk, RButtonDown, RButtonUp, RButtonDblClk;

  /// Handles a mouse message of the system: 512 for a move, 513 to 518 for the buttons.
  void mouseMessage(int message);
  /// Whether an event is being handled.
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
