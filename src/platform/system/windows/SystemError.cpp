#include "platform/system/windows/SystemError.h"

#include <windows.h>

#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

class Category final : public std::error_category {
 public:
  const char* name() const noexcept override { return "system"; }
  std::string message(int number) const override {
    return SystemErrorText(static_cast<unsigned long>(number));
  }
  std::error_condition default_error_condition(int number) const noexcept override {
    return std::system_category().default_error_condition(number);
  }
};

}  // namespace

const std::error_category& SystemErrors() {
  static const Category category;
  return category;
}

std::string SystemErrorText(unsigned long number) {
  wchar_t text[1000];
  const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        number, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
  std::string message = Narrow(std::wstring_view(text, length));
  message.erase(message.find_last_not_of("\r\n. ") + 1);
  return message.empty() ? "error " + std::to_string(number) : message;
}

void RaiseLastError(const char* what, const std::filesystem::path& path) {
  const DWORD number = ::GetLastError();
  throw std::system_error(std::error_code(static_cast<int>(number), SystemErrors()),
                          std::string(what) + " " + Narrow(path.native()));
}

}  // namespace quillmoor
