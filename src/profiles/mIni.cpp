#include "profiles/mIni.h"

#include "platform/CodePage.h"
#include "platform/PrivateProfile.h"

namespace quillmoor::mIni {

std::string ReadValue(const std::string& section, const std::string& key, const std::string& file) {
  return FromAnsi(GetPrivateProfileString(ToAnsi(section), ToAnsi(key), file));
}

bool WriteValue(const std::string& section, const std::string& key, const std::string& value,
                const std::string& file) {
  return WritePrivateProfileString(ToAnsi(section), ToAnsi(key), ToAnsi(value), file);
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
