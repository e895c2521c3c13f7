// A system handle, closed with its owner.
#pragma once

#include <windows.h>

#include <utility>

namespace quillmoor {

class Handle {
 public:
  Handle() = default;
  /// Owns the result of CreateFile and the like: INVALID_HANDLE_VALUE and null are empty.
  explicit Handle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  ~Handle() {
    if (handle_) ::CloseHandle(handle_);
  }
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }

  explicit operator bool() const { return handle_ != nullptr; }
  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_ = nullptr;
};

}  // namespace quillmoor
