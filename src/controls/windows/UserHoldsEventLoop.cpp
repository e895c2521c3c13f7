#include "controls/UserHoldsEventLoop.h"

#include <windows.h>

namespace quillmoor {

/// None of these flags is set for a scroll bar, but it captures the mouse.
bool UserHoldsEventLoop() {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  if (!::GetGUIThreadInfo(::GetCurrentThreadId(), &info)) return false;
  return (info.flags & (GUI_INMENUMODE | GUI_INMOVESIZE | GUI_POPUPMENUMODE | GUI_SYSTEMMENUMODE)) != 0 ||
         info.hwndCapture != nullptr;
}

}  // namespace quillmoor
