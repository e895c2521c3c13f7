#include "platform/system/windows/WideText.h"

#include <windows.h>

#include <algorithm>

#include "base/Utf8.h"

namespace quillmoor {
namespace {

// A folder's path must leave room for an 8.3 file name in it: 260 - 12.
constexpr std::size_t kPlainLength = 240;
constexpr std::wstring_view kUnlimited = L"\\\\?\\";

std::wstring fullPath(const std::wstring& path) {
  std::wstring full(1000, L'\0');
  for (;;) {
    const DWORD length =
        ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length == 0) return path;
    const bool fits = length < full.size();
    full.resize(length);
    if (fits) return full;
  }
}

void appendUtf16(std::wstring& wide, std::string_view utf8) {
  while (!utf8.empty()) {
    const Utf8Character next = DecodeUtf8(utf8);
    if (next.character < 0x10000) {
      wide += static_cast<wchar_t>(next.character);
    } else {
      wide += static_cast<wchar_t>(0xD800 + ((next.character - 0x10000) >> 10));
      wide += static_cast<wchar_t>(0xDC00 + ((next.character - 0x10000) & 0x3FF));
    }
    utf8.remove_prefix(next.length);
  }
}

}  // namespace

TextPiece FirstPiece(std::string_view text, unsigned codePage) {
  const auto beyondAscii = [&](std::size_t at) { return static_cast<unsigned char>(text[at]) >= 0x80; };
  std::size_t utf8 = 0;
  for (std::size_t length = 1; utf8 < text.size() && length != 0; utf8 += length)
    length = DecodeUtf8(text.substr(utf8)).length;
  if (utf8 == text.size()) return {utf8, false};
  CPINFO page{};
  const bool doubleByte = ::GetCPInfo(codePage, &page) != FALSE && page.MaxCharSize == 2;
  while (doubleByte && utf8 > 0 && beyondAscii(utf8 - 1)) --utf8;
  if (utf8 > 0) return {utf8, false};
  if (!doubleByte) return {1, true};
  std::size_t ansi = 0;
  while (ansi < text.size() && beyondAscii(ansi)) {
    const bool lead = ::IsDBCSLeadByteEx(codePage, static_cast<BYTE>(text[ansi])) != FALSE;
    ++ansi;
    if (lead && ansi < text.size() && static_cast<unsigned char>(text[ansi]) >= 0x40 && text[ansi] != '\\')
      ++ansi;
  }
  return {ansi, true};
}

std::wstring Widen(std::string_view utf8, unsigned codePage) {
  std::wstring wide;
  wide.reserve(utf8.size());
  while (!utf8.empty()) {
    const TextPiece piece = FirstPiece(utf8, codePage);
    if (piece.ansi) {
      std::wstring characters(piece.bytes, L'?');
      const int length = static_cast<int>(piece.bytes);
      const int got = ::MultiByteToWideChar(codePage, 0, utf8.data(), length, characters.data(), length);
      wide += got > 0 ? characters.substr(0, static_cast<std::size_t>(got)) : characters;
    } else {
      appendUtf16(wide, utf8.substr(0, piece.bytes));
    }
    utf8.remove_prefix(piece.bytes);
  }
  return wide;
}

std::string Narrow(std::wstring_view wide) {
  const auto isHigh = [](wchar_t c) { return c >= 0xD800 && c < 0xDC00; };
  const auto isLow = [](wchar_t c) { return c >= 0xDC00 && c < 0xE000; };
  std::string utf8;
  utf8.reserve(wide.size());
  for (std::size_t i = 0; i < wide.size(); ++i) {
    char32_t character = wide[i];
    if (isHigh(wide[i]) && i + 1 < wide.size() && isLow(wide[i + 1])) {
      character = 0x10000 + ((character - 0xD800) << 10) + (static_cast<char32_t>(wide[++i]) - 0xDC00);
    } else if (isHigh(wide[i]) || isLow(wide[i])) {
      character = 0xFFFD;
    }
    AppendUtf8(utf8, character);
  }
  return utf8;
}

std::wstring WidePath(const std::filesystem::path& path) {
  const std::wstring& plain = path.native();
  if (plain.size() < kPlainLength || plain.starts_with(kUnlimited)) return plain;
  const std::wstring full = fullPath(plain);
  if (full.starts_with(kUnlimited)) return full;
  if (full.starts_with(L"\\\\")) return std::wstring(kUnlimited) + L"UNC" + full.substr(1);
  return std::wstring(kUnlimited) + full;
}

std::wstring WidePath(const std::string& text) {
  return WidePath(std::filesystem::path(Widen(text)));
}

}  // namespace quillmoor
