#include "platform/files/SingleInstance.h"

// clang-format off
#include <windows.h>
#include <sddl.h>
// clang-format on

#include <string>

namespace quillmoor {
namespace {

/// The account's SID as text; empty when it cannot be read.
std::wstring accountId() {
  HANDLE token = nullptr;
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) return {};
  alignas(TOKEN_USER) char user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  wchar_t* text = nullptr;
  std::wstring id;
  if (::GetTokenInformation(token, TokenUser, user, sizeof user, &size) &&
      ::ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user)->User.Sid, &text)) {
    id = text;
    ::LocalFree(text);
  }
  ::CloseHandle(token);
  return id;
}

}  // namespace

/// Across all sessions of the user, who may be at the machine and at its remote desktop at once. Access is
/// denied to the lock of a copy that runs as administrator.
SingleInstance::SingleInstance(Lock lock) {
  const std::wstring name =
      (lock == Lock::run ? L"Global\\Quillmoor-Run-" : L"Global\\Quillmoor-") + accountId();
  const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, name.c_str());
  const DWORD error = ::GetLastError();
  another_ = mutex ? error == ERROR_ALREADY_EXISTS : error == ERROR_ACCESS_DENIED;
  if (mutex) handle_ = reinterpret_cast<std::intptr_t>(mutex);
}

SingleInstance::~SingleInstance() {
  if (handle_ != -1) ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace quillmoor
