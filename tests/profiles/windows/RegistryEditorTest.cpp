// Exports of the registry between this system and one whose registry is a file: the system's own editor takes
// the file that is written there, and what it writes is read there.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>

#include "platform/files/LocalPath.h"
#include "platform/registry/RegistryApi.h"
#include "platform/system/windows/WideText.h"
#include "profiles/RegistryExchange.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::exchangedValues;
using testing::kExchangePath;

/// True when the editor has ended in good order.
bool registryEditor(const std::wstring& arguments) {
  std::wstring command = L"regedit.exe " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                       &process) == FALSE)
    return false;
  ::WaitForSingleObject(process.hProcess, INFINITE);
  DWORD status = 1;
  ::GetExitCodeProcess(process.hProcess, &status);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  return status == 0;
}

class RegistryEditor : public ::testing::Test {
 protected:
  // The editor is another program, so this is the user's real registry; the key is no one else's, nor that of
  // a test that runs beside this one.
  RegistryEditor() { remove(); }
  ~RegistryEditor() override { remove(); }
  void remove() const { ::RegDeleteTreeW(HKEY_CURRENT_USER, Widen(path).c_str()); }

  testing::TemporaryFolder folder;
  const std::string path = kExchangePath + std::to_string(::GetCurrentProcessId());
  const std::string fullPath = "HKEY_CURRENT_USER\\" + path;
};

TEST_F(RegistryEditor, ImportsWhatIsWrittenAsAFile) {
  const auto file = folder / "settings.reg";
  testing::writeFile(file, formatRegistryFile({{fullPath, exchangedValues()}}));
  ASSERT_TRUE(registryEditor(L"/S \"" + file.native() + L"\""));
  for (const RegistryFileValue& value : exchangedValues()) {
    const auto data = RegistryApi::queryValue(HKEY_CURRENT_USER_VALUE, path, value.name);
    ASSERT_TRUE(data) << value.name;
    EXPECT_EQ(data->type, value.data.type) << value.name;
    EXPECT_EQ(data->bytes, value.data.bytes) << value.name;
  }
}

TEST_F(RegistryEditor, ExportsWhatIsReadFromAFile) {
  for (const RegistryFileValue& value : exchangedValues()) {
    RegistryApi::setValue(HKEY_CURRENT_USER_VALUE, path, value.name, value.data);
  }
  const auto file = folder / "settings.reg";
  ASSERT_TRUE(registryEditor(L"/E \"" + file.native() + L"\" \"" + Widen(fullPath) + L"\""));
  const auto keys = parseRegistryFile(testing::contentsOf(file));
  const auto key = std::find_if(keys.begin(), keys.end(), [&](const auto& k) { return k.path == fullPath; });
  ASSERT_NE(key, keys.end());
  EXPECT_EQ(key->values.size(), exchangedValues().size());
  for (const RegistryFileValue& value : exchangedValues()) {
    const auto found = std::find_if(key->values.begin(), key->values.end(),
                                    [&](const auto& v) { return v.name == value.name; });
    ASSERT_NE(found, key->values.end()) << value.name;
    EXPECT_EQ(found->data.type, value.data.type) << value.name;
    EXPECT_EQ(found->data.bytes, value.data.bytes) << value.name;
  }
}

}  // namespace
}  // namespace quillmoor
