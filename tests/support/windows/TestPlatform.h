// Changes of the environment that tests make for a while, as this system does them.
#pragma once

#include <windows.h>
// After it.
#include <sddl.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/TemporaryFolder.h"

namespace quillmoor::testing {

/// Bytes of a file, set by its size alone, that takes a while to copy.
inline constexpr std::uintmax_t kLongToCopy = std::uintmax_t{1} << 28;

/// Whether a reset connection can be distinguished from a closed one; under Wine it cannot by a program that
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

  /// While it lives, nobody may write to those of the keys that exist.
  class NoWrites {
   public:
    NoWrites(const OwnRegistry&, std::vector<const char*> keys) : keys_(std::move(keys)) { allow(L"KR"); }
    ~NoWrites() { allow(L"KA"); }
    NoWrites(const NoWrites&) = delete;
    NoWrites& operator=(const NoWrites&) = delete;

   private:
    /// To everyone: the rights, and those to change this.
    void allow(const std::wstring& rights) const {
      PSECURITY_DESCRIPTOR all = nullptr;
      EXPECT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorW(
          (L"D:P(A;;" + rights + L";;;WD)(A;;WDSD;;;WD)").c_str(), SDDL_REVISION_1, &all, nullptr));
      for (const char* const name : keys_) {
        HKEY key = nullptr;
        if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, name, 0, WRITE_DAC, &key) != ERROR_SUCCESS) continue;
        EXPECT_EQ(::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, all), ERROR_SUCCESS);
        ::RegCloseKey(key);
      }
      ::LocalFree(all);
    }
    const std::vector<const char*> keys_;
  };

  OwnRegistry(const OwnRegistry&) = delete;
  OwnRegistry& operator=(const OwnRegistry&) = delete;

 private:
  std::wstring path_ = L"Software\\QuillmoorTest-" + std::to_wstring(std::random_device{}());
  HKEY key_ = nullptr;
};

}  // namespace quillmoor::testing
