#include "platform/network/NetworkAlive.h"

#include <windows.h>

namespace quillmoor {
namespace {

using AskSystem = BOOL(WINAPI*)(LPDWORD flags);

/// Loaded on first use and kept: a program linked to it would not start on a machine without it.
AskSystem systemFunction() {
  static const AskSystem found = [] {
    const HMODULE library = ::LoadLibraryExW(L"sensapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const FARPROC function = library ? ::GetProcAddress(library, "IsNetworkAlive") : nullptr;
    return reinterpret_cast<AskSystem>(reinterpret_cast<void*>(function));
  }();
  return found;
}

}  // namespace

bool IsNetworkAlive(std::uint32_t& kinds) {
  const AskSystem ask = systemFunction();
  DWORD flags = 0;
  if (!ask || ask(&flags) != 1) return false;  // anything but 1 is a failure of the function
  kinds = flags;
  return true;
}

}  // namespace quillmoor
