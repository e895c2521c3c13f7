#include "platform/system/CodePage.h"

#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {

// The system's conversions take 32-bit lengths; all text here is far shorter.

std::string ToAnsi(std::string_view utf8) {
  // Invalid UTF-8 bytes were widened by the code page, so they come back unchanged.
  const std::wstring wide = Widen(utf8);
  const int length = static_cast<int>(wide.size());
  const int size = ::WideCharToMultiByte(CP_ACP, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  std::string ansi(static_cast<std::size_t>(size), '\0');
  ::WideCharToMultiByte(CP_ACP, 0, wide.data(), length, ansi.data(), size, nullptr, nullptr);
  return ansi;
}

namespace {

std::wstring wideFromAnsi(std::string_view ansi, unsigned codePage = CP_ACP) {
  const int length = static_cast<int>(ansi.size());
  const int size = ::MultiByteToWideChar(codePage, 0, ansi.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  ::MultiByteToWideChar(codePage, 0, ansi.data(), length, wide.data(), size);
  return wide;
}

}  // namespace

std::string FromAnsi(std::string_view ansi) {
  return Narrow(wideFromAnsi(ansi));
}

TextPiece FirstPiece(std::string_view text) {
  return FirstPiece(text, CP_ACP);
}

std::string ToUtf8(std::string_view text) {
  return Narrow(Widen(text));
}

int CompareAnsiNames(std::string_view a, std::string_view b) {
  return CompareAnsiNames(a, b, CP_ACP);
}

int CompareAnsiNames(std::string_view a, std::string_view b, unsigned codePage) {
  const std::wstring x = wideFromAnsi(a, codePage);
  const std::wstring y = wideFromAnsi(b, codePage);
  return ::CompareStringOrdinal(x.data(), static_cast<int>(x.size()), y.data(), static_cast<int>(y.size()),
                                TRUE) -
         CSTR_EQUAL;
}

}  // namespace quillmoor
