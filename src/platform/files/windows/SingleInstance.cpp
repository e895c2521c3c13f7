#include "platform/files/SingleInstance.h"

// clang-format off
#include <windows.h>
#include <sddl.h>
// clang-format on

#include <string>

namespace quillmoor {
namespace {

/// The account as text; empty when the system does not tell.
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

/// Of all sessions of the user: he may be at the machine and at a remote desktop of it at once. A copy that
/// runs as administrator does not let others open its mark.
SingleInstance::SingleInstance(Mark mark) {
  const std::wstring name =
      (mark == Mark::run ? L"Global\\Quillmoor-Run-" : L"Global\\Quillmoor-") + accountId();
  const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, name.c_str());
  const DWORD error = ::GetLastError();
  another_ = mutex ? error == ERROR_ALREADY_EXISTS : error == ERROR_ACCESS_DENIED;
  if (mutex) handle_ = reinterpret_cast<std::intptr_t>(mutex);
}

SingleInstance::~SingleInstance() {
  if (handle_ != -1) ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace quillmoor
