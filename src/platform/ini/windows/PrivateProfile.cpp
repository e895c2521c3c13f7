// Uses the system's functions. Their wide forms, with the text converted here, allow a path that the code
// page cannot represent; the file itself is ANSI either way.
#include "platform/ini/PrivateProfile.h"

#include <algorithm>
#include <filesystem>

#include "platform/files/LocalPath.h"
#include "platform/system/CodePage.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {
namespace {

std::wstring wideOf(std::string_view ansi) {
  return Widen(FromAnsi(ansi));
}

std::string ansiOf(std::wstring_view wide) {
  return ToAnsi(Narrow(wide));
}

/// The functions would look for a bare name in the Windows folder.
std::wstring fileName(const std::string& file) {
  return std::filesystem::absolute(LocalPath(file)).native();
}

/// The functions cache what they have read; drops the cache, so that changes by other programs are seen.
void dropCache(const std::wstring& file) {
  ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, file.c_str());
}

bool holdsLineBreak(std::string_view text) {
  return text.find_first_of("\r\n") != std::string_view::npos;
}

std::wstring read(const wchar_t* section, const wchar_t* key, const std::string& file) {
  const std::wstring name = fileName(file);
  dropCache(name);
  std::wstring buffer(kPrivateProfileBuffer, L'\0');
  const DWORD length = ::GetPrivateProfileStringW(section, key, L"", buffer.data(),
                                                  static_cast<DWORD>(buffer.size()), name.c_str());
  buffer.resize(length);
  return buffer;
}

}  // namespace

std::string GetPrivateProfileString(std::string_view section, std::string_view key, const std::string& file) {
  return ansiOf(read(wideOf(section).c_str(), wideOf(key).c_str(), file));
}

std::vector<std::string> GetPrivateProfileSectionNames(const std::string& file) {
  const std::wstring list = read(nullptr, nullptr, file);
  std::vector<std::string> names;
  for (std::size_t at = 0; at < list.size();) {
    const std::size_t end = std::min(list.find(L'\0', at), list.size());
    names.push_back(ansiOf(std::wstring_view(list).substr(at, end - at)));
    at = end + 1;
  }
  return names;
}

bool WritePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& file) {
  if (holdsLineBreak(section) || holdsLineBreak(key) || holdsLineBreak(value)) return false;
  return ::WritePrivateProfileStringW(wideOf(section).c_str(), wideOf(key).c_str(), wideOf(value).c_str(),
                                      fileName(file).c_str()) != FALSE;
}

bool DeletePrivateProfileSection(std::string_view section, const std::string& file) {
  return ::WritePrivateProfileStringW(wideOf(section).c_str(), nullptr, nullptr, fileName(file).c_str()) !=
         FALSE;
}

}  // namespace quillmoor
