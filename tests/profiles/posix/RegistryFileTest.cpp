// The file that holds the registry on this platform, its permissions, and the desktop's autostart entry.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/ini/PrivateProfile.h"
#include "platform/registry/RegistryApi.h"
#include "platform/system/Notices.h"
#include "platform/system/ProgramFolder.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/RegistryFixture.h"
#include "profiles/SettingsStore.h"
#include "profiles/mAutoRun.h"

namespace quillmoor {
namespace {

using ::testing::AllOf;
using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::writeFile;
using Bytes = std::vector<std::uint8_t>;

using RegistryStore = RegistryFixture;

const std::string kHead =
    "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Test]\r\n";

std::string utf16(const std::string& ascii) {
  std::string bytes = "\xFF\xFE";
  for (const char c : ascii) bytes.append({c, '\0'});
  return bytes;
}

TEST_F(RegistryStore, IsAFileThatTheRegistryEditorImports) {
  value("").SetValue(std::string("the default value"));
  value("t\"x\\").SetValue(std::string("a\\b \"c\""));
  value("number", 4).SetValue(std::int32_t{42});
  value("none", 3).SetValue(Bytes());
  value("bytes", 3).SetValue(Bytes(30, 0xAB));
  const std::string ascii = kHead +
                            "@=\"the default value\"\r\n\"t\\\"x\\\\\"=\"a\\\\b "
                            "\\\"c\\\"\"\r\n\"number\"=dword:0000002a\r\n\"none\"=hex:\r\n\"bytes\"=hex:"
                            "ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,\\\r\n"
                            "  ab,ab,ab,ab,ab,ab,ab,ab,ab\r\n";
  EXPECT_EQ(contentsOf(own.store), ascii);
  value("ref").SetValue(std::string("%A%"));
  EXPECT_EQ(contentsOf(own.store), utf16(ascii + "\"ref\"=hex(2):25,00,41,00,25,00,00,00\r\n"));
  value("ref").DeleteValue();
  value("none").SetValue(std::string("\xC3\xBC"));
  EXPECT_THAT(contentsOf(own.store), HasSubstr(std::string("\"\0\xFC\0\"\0", 6)));
  value("none").SetValue(std::string("\n\x7F"));  // not every editor keeps these in quotes
  EXPECT_THAT(contentsOf(own.store), HasSubstr(utf16("\"none\"=hex(1):0a,00,7f,").substr(2)));
}

TEST_F(RegistryStore, ReadsWhatTheRegistryEditorExports) {
  const std::string text = kHead +
                           "@=\"default\"\r\n\"text\"=\"two\r\nlines\"\r\n\"bytes\"=hex:01,\\\r\n  02,03\r\n"
                           "\"n\"=dword:FFFFFFFE\r\n\"gone\"=\"x\"\r\n\"gone\"=-\r\n; a comment\r\n"
                           "[HKEY_CURRENT_USER\\X]\r\n[-HKEY_CURRENT_USER\\X]\r\n";
  std::filesystem::create_directories(own.store.parent_path());
  for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, utf16(text)}) {
    writeFile(own.store, bytes);
    EXPECT_EQ(value("").Value(), RegistryValue(std::string("default")));
    EXPECT_EQ(value("text").Value(), RegistryValue(std::string("two\r\nlines")));
    EXPECT_EQ(value("bytes").Value(), RegistryValue(Bytes{1, 2, 3}));
    EXPECT_EQ(value("n").Value(), RegistryValue(std::int32_t{-2}));
    EXPECT_EQ(value("gone").Value(), RegistryValue());
    EXPECT_FALSE(RegistryApi::keyExists(HKEY_CURRENT_USER_VALUE, "X"));
  }
}

TEST_F(RegistryStore, LeavesADamagedFileAlone) {
  std::filesystem::create_directories(own.store.parent_path());
  for (const std::string damage : {"\"a\"=dword:x\r\n", "\"a\"=dword:000000001\r\n", "[no bracket\r\n",
                                   "\"a\"=hex:0g\r\n", "rubbish\r\n", "\"a\"=\"b\" c\r\n"}) {
    std::filesystem::remove(own.store.string() + ".damaged");
    writeFile(own.store, kHead + damage);
    try {
      LoadApplicationSettings();
      ADD_FAILURE() << "not raised: " << damage;
    } catch (const RegistryStoreError& error) {
      EXPECT_THAT(error.what(), AllOf(HasSubstr(own.store.string()), HasSubstr("line 4"))) << damage;
    }
    EXPECT_THROW(WriteSetting("AutoDial", "0"), RegistryError);
    EXPECT_EQ(contentsOf(own.store), kHead + damage);
    EXPECT_EQ(contentsOf(own.store.string() + ".damaged"), kHead + damage);
  }
  for (const std::string& bytes : {std::string("REGEDIT9\r\n"), kHead + "\"a\"=\"never closed\r\n"}) {
    writeFile(own.store, bytes);
    EXPECT_THROW(LoadApplicationSettings(), RegistryStoreError);
  }
}

TEST_F(RegistryStore, RevokesThePermissionsOfOthers) {
  std::vector<std::string> notices;
  SetNoticeSink([&](const std::string& line) { notices.push_back(line); });
  const auto profiles = own.folder / "Profiles.ini";
  const struct {
    std::filesystem::path path;
    int mode, open;
  } rows[] = {{own.store.parent_path(), 0700, 0755}, {own.store, 0600, 0640}, {profiles, 0600, 0604}};
  for (const char* const value : {"0", "1"}) {
    WriteSetting("AutoDial", value);
    EXPECT_TRUE(WritePrivateProfileString("s", "k", value, profiles.string()));
    EXPECT_EQ(notices.size(), *value == '0' ? 0U : 3U) << "new files have no other permissions";
    for (const auto& row : rows) {
      EXPECT_EQ(static_cast<int>(std::filesystem::status(row.path).permissions()), row.mode) << row.path;
      std::filesystem::permissions(row.path, std::filesystem::perms(row.open));
    }
  }
  EXPECT_THAT(notices, ElementsAre(HasSubstr(rows[0].path.string() + ". Its permissions are now 0700"),
                                   HasSubstr(rows[1].path.string() + ". Its permissions are now 0600"),
                                   HasSubstr(rows[2].path.string() + ". Its permissions are now 0600")));
  SetNoticeSink({});
}

TEST_F(RegistryStore, KeepsTheDesktopsAutostartEntryUpToDate) {
  using mAutoRun::Mode;
  const auto desktopEntry = own.folder / "autostart" / (ProgramName() + ".desktop");
  for (const Mode mode : {Mode::off, Mode::always, Mode::once, Mode::always, Mode::off, Mode::always}) {
    mAutoRun::SetAutoRun(mode);
    EXPECT_EQ(std::filesystem::exists(desktopEntry), mode == Mode::always);
  }
  const auto past = std::filesystem::last_write_time(desktopEntry) - std::chrono::hours(1);
  std::filesystem::last_write_time(desktopEntry, past);
  mAutoRun::SetAutoRun(Mode::always);
  EXPECT_EQ(std::filesystem::last_write_time(desktopEntry), past) << "an entry that is right is not written";
  writeFile(desktopEntry, "[Desktop Entry]\nHidden=true\n");
  mAutoRun::SetAutoRun(Mode::always);
  EXPECT_THAT(contentsOf(desktopEntry), HasSubstr("\nExec=\"" + ProgramFolder() + ProgramName() + "\"\n"));

  cRegistry run = value(ProgramName());
  run.SectionKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
  testing::setEnvironment("QUILLMOOR_TEST_FOLDER", "/opt");
  run.SetValue(std::string("%QUILLMOOR_TEST_FOLDER%/100%x%/program"));
  testing::unsetEnvironment("QUILLMOOR_TEST_FOLDER");
  EXPECT_THAT(contentsOf(desktopEntry), HasSubstr("\nExec=\"/opt/100%%x%%/program\"\n"));
}

}  // namespace
}  // namespace quillmoor
