#include "platform/system/ProgramFolder.h"

#include <windows.h>

#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

std::wstring executable() {
  std::wstring path(300, L'\0');
  for (;;) {
    const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) return path.substr(0, length);
    path.resize(path.size() * 2);
  }
}

}  // namespace

std::string ProgramFolder() {
  const std::wstring path = executable();
  return Narrow(path.substr(0, path.rfind(L'\\') + 1));
}

std::string ProgramPath() {
  return Narrow(executable());
}

std::string ProgramName() {
  const std::wstring path = executable();
  std::string name = Narrow(path.substr(path.rfind(L'\\') + 1));
  const auto dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(0, dot);
}

}  // namespace quillmoor
