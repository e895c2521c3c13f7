#include "platform/SingleInstance.h"

#include <windows.h>

namespace quillmoor {

SingleInstance::SingleInstance() {
  const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, L"Local\\Quillmoor");
  another_ = mutex && ::GetLastError() == ERROR_ALREADY_EXISTS;
  if (mutex) handle_ = reinterpret_cast<std::intptr_t>(mutex);
}

SingleInstance::~SingleInstance() {
  if (handle_ != -1) ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace quillmoor
