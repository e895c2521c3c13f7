// The system's registry editor imports the file that is the registry on other systems, and exports what is
// read there.
#include <gtest/gtest.h>
#include <process.h>
#include <windows.h>

#include <map>
#include <string>
#include <vector>

#include "platform/files/LocalPath.h"
#include "platform/registry/RegistryFile.h"
#include "platform/system/windows/WideText.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

std::vector<RegistryFileValue> exchangedValues() {
  using enum RegistryType;
  return {
      {"Quotes and \\ in the name", {text, "C:\\Program Files\\\"x\" y"}},
      {"Umlauts", {text, "K\xC3\xB6ln / \xE2\x82\xAC"}},
      {"Outside the code page", {text, "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80"}},
      {"Blanks", {text, "  a  "}},
      {"Lines", {text, "one\r\ntwo"}},
      {"Long", {text, std::string(40'000, 'l')}},
      {"Reference", {expandText, "%TEMP%\\x"}},
      {"Number", {dword, std::string("\x2A\0\0\x80", 4)}},
      {"Bytes", {binary, std::string("\0\xFF\x10", 3)}},
      {"No bytes", {binary, ""}},
      {"", {text, "the default value"}},
  };
}

class RegistryEditor : public ::testing::Test {
 protected:
  // The editor is another program, so this is the user's real registry. No other program and no concurrent
  // test has this key.
  RegistryEditor() { remove(); }
  ~RegistryEditor() override { remove(); }
  void remove() const { ::RegDeleteTreeW(HKEY_CURRENT_USER, Widen(path).c_str()); }

  testing::TemporaryFolder folder;
  const std::string path = "Software\\Tarnick\\Quillmoor\\Exchange" + std::to_string(::GetCurrentProcessId());
  const std::string fullPath = "HKEY_CURRENT_USER\\" + path;
};

TEST_F(RegistryEditor, ImportsAndExportsTheFile) {
  const auto file = folder / "settings.reg", exported = folder / "exported.reg";
  testing::writeFile(file, formatRegistryFile({{fullPath, exchangedValues()}}));
  wchar_t regedit[MAX_PATH];
  ::wcscpy(regedit + ::GetWindowsDirectoryW(regedit, MAX_PATH - 20), L"\\regedit.exe");
  ASSERT_EQ(::_wspawnl(_P_WAIT, regedit, regedit, L"/S", file.c_str(), nullptr), 0);
  ASSERT_EQ(::_wspawnl(_P_WAIT, regedit, regedit, L"/E", exported.c_str(), Widen(fullPath).c_str(), nullptr),
            0);
  std::map<std::string, RegistryData> found;
  for (const RegistryFileKey& key : parseRegistryFile(testing::contentsOf(exported))) {
    for (const RegistryFileValue& value : key.values) found[key.path + "|" + value.name] = value.data;
  }
  for (const RegistryFileValue& value : exchangedValues()) {
    EXPECT_EQ(RegistryApi::queryValue(HKEY_CURRENT_USER_VALUE, path, value.name), value.data) << value.name;
    EXPECT_EQ(found[fullPath + "|" + value.name], value.data) << value.name;
  }
}

}  // namespace
}  // namespace quillmoor
