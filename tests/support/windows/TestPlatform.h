// What a test changes around itself for a while, as this system does it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <random>
#include <string>

#include "support/TemporaryFolder.h"

namespace quillmoor::testing {

/// Bytes of a file, set by its size alone, that takes a while to copy.
inline constexpr std::uintmax_t kLongToCopy = std::uintmax_t{1} << 28;

/// Whether a connection that was reset can be told from one that was closed. Wine cannot where a program
/// waits with select.
inline bool tellsResetFromEnd() {
  return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
}

/// The TCP options for the seconds of silence after which the system probes a connection, and between the
/// probes; whether the system returns them.
inline constexpr int kProbeAfter = 3, kProbeEvery = 17;  // TCP_KEEPIDLE, TCP_KEEPINTVL
inline bool tellsProbes() {
  return tellsResetFromEnd();  // Wine returns neither
}

inline void setEnvironment(const char* name, const std::string& value) {
  ::SetEnvironmentVariableA(name, value.c_str());
}
inline void unsetEnvironment(const char* name) {
  ::SetEnvironmentVariableA(name, nullptr);
}

/// An empty key in place of the machine's registry, for this process alone.
class OwnRegistry {
 public:
  OwnRegistry() {
    ::RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_,
                      nullptr);
    EXPECT_EQ(::RegOverridePredefKey(HKEY_LOCAL_MACHINE, key_), ERROR_SUCCESS);
  }
  ~OwnRegistry() {
    ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    ::RegCloseKey(key_);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  }
  /// From now on nothing can be stored: the key is gone, though still in the machine's place.
  void refuseWrites() { ::RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str()); }

  /// Another number after every write to that key of the machine.
  std::uint64_t writeStamp(const char* key) const {
    HKEY found = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, key, 0, KEY_READ, &found) != ERROR_SUCCESS) return 0;
    FILETIME time{};
    ::RegQueryInfoKeyW(found, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                       nullptr, &time);
    ::RegCloseKey(found);
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
  }

  OwnRegistry(const OwnRegistry&) = delete;
  OwnRegistry& operator=(const OwnRegistry&) = delete;

 private:
  std::wstring path_ = L"Software\\QuillmoorTest-" + std::to_wstring(std::random_device{}());
  HKEY key_ = nullptr;
};

}  // namespace quillmoor::testing
