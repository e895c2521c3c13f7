#include "profiles/mIni.h"

#include "platform/ini/PrivateProfile.h"
#include "platform/system/CodePage.h"

namespace quillmoor::mIni {
namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

/// Reading removes blanks and one pair of quotes around a value: one that has its own gets an extra pair.
std::string guarded(const std::string& value) {
  if (value.empty()) return value;
  const bool quoted =
      value.size() > 1 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
  return quoted || isBlank(value.front()) || isBlank(value.back()) ? '"' + value + '"' : value;
}

}  // namespace

std::string ReadValue(const std::string& section, const std::string& key, const std::string& file) {
  return FromAnsi(GetPrivateProfileString(ToAnsi(section), ToAnsi(key), file));
}

bool WriteValue(const std::string& section, const std::string& key, const std::string& value,
                const std::string& file) {
  return WritePrivateProfileString(ToAnsi(section), ToAnsi(key), ToAnsi(guarded(value)), file);
}

std::vector<std::string> ListSections(const std::string& file) {
  std::vector<std::string> names = GetPrivateProfileSectionNames(file);
  for (std::string& name : names) name = FromAnsi(name);
  return names;
}

bool DeleteSection(const std::string& section, const std::string& file) {
  return DeletePrivateProfileSection(ToAnsi(section), file);
}

bool EditWhole(const std::string& file, const std::function<bool(const std::string& copy)>& edit) {
  return EditPrivateProfile(file, edit);
}

}  // namespace quillmoor::mIni
