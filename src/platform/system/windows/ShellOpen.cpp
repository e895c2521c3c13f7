#include "platform/system/ShellOpen.h"

#include "platform/system/windows/WindowsApi.h"
// These need the header above.
#include <objbase.h>
#include <shellapi.h>

#include <algorithm>
#include <limits>

#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

/// "Open" may call a COM server, so the thread must be in an apartment. An existing one is kept.
class Apartment {
 public:
  Apartment()
      : entered_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}
  ~Apartment() {
    if (entered_) ::CoUninitialize();
  }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

 private:
  bool entered_;
};

}  // namespace

int ShellOpen(const std::string& target) {
  if (target.empty() || target.find('\0') != std::string::npos) return ERROR_FILE_NOT_FOUND;
  const Apartment apartment;
  const std::wstring file = Widen(target);
  const auto result =
      reinterpret_cast<INT_PTR>(::ShellExecuteW(nullptr, L"Open", file.c_str(), nullptr, nullptr, SW_HIDE));
  // A number cast to a handle.
  return static_cast<int>(std::min<INT_PTR>(result, std::numeric_limits<int>::max()));
}

}  // namespace quillmoor
