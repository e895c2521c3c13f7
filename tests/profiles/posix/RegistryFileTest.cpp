// The file that the registry is on this platform, and what keeps in step with it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/ini/PrivateProfile.h"
#include "platform/registry/RegistryApi.h"
#include "platform/registry/RegistryFile.h"
#include "platform/system/Notices.h"
#include "platform/system/ProgramFolder.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/RegistryExchange.h"
#include "profiles/RegistryFixture.h"
#include "profiles/SettingsStore.h"
#include "profiles/mAutoRun.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::writeFile;
using Bytes = std::vector<std::uint8_t>;

using RegistryStore = RegistryFixture;

TEST_F(RegistryStore, IsAFileThatTheRegistryEditorImports) {
  value("text").SetValue(std::string("a\\b \"c\""));
  value("number", 4).SetValue(std::int32_t{42});
  value("bytes", 3).SetValue(Bytes(30, 0xAB));
  const std::string abs = [] {
    std::string text;
    for (int i = 0; i < 21; ++i) text += "ab,";
    return text;
  }();
  const std::string ascii =
      "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Test]\r\n"
      "\"text\"=\"a\\\\b \\\"c\\\"\"\r\n"
      "\"number\"=dword:0000002a\r\n"
      "\"bytes\"=hex:" +
      abs + "\\\r\n  ab,ab,ab,ab,ab,ab,ab,ab,ab\r\n";
  EXPECT_EQ(contentsOf(own.store), ascii);

  value("ref").SetValue(std::string("%A%"));
  std::string utf16 = "\xFF\xFE";
  for (const char c : ascii + "\"ref\"=hex(2):25,00,41,00,25,00,00,00\r\n") utf16.append({c, '\0'});
  EXPECT_EQ(contentsOf(own.store), utf16);
  value("ref").DeleteValue();
  value("text").SetValue(std::string("\xC3\xBC"));
  EXPECT_NE(contentsOf(own.store).find(std::string("\"\0\xFC\0\"\0", 6)), std::string::npos);
}

TEST_F(RegistryStore, ReadsWhatTheRegistryEditorExports) {
  const std::string text =
      "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Test]\r\n@=\"default\"\r\n"
      "\"text\"=\"two\r\nlines\"\r\n\"bytes\"=hex:01,\\\r\n  "
      "02,03\r\n\"n\"=dword:FFFFFFFE\r\n\"gone\"=\"x\"\r\n"
      "\"gone\"=-\r\n; a comment\r\n[HKEY_CURRENT_USER\\X]\r\n[-HKEY_CURRENT_USER\\X]\r\n";
  std::string utf16 = "\xFF\xFE";
  for (const char c : text) utf16.append({c, '\0'});
  for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, utf16}) {
    std::filesystem::create_directories(own.store.parent_path());
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
  const std::string head =
      "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Test]\r\n";
  const struct {
    std::string bytes;
    const char* line;
  } cases[] = {{"REGEDIT9\r\n", "line 1"},
               {head + "\"a\"=\"never closed\r\n", "line"},
               {head + "\"a\"=dword:x\r\n", "line 4"},
               {head + "[no bracket\r\n", "line"},
               {head + "\"a\"=hex:0g\r\n", "line 4"},
               {head + "rubbish\r\n", "line 4"},
               {head + "\"a\"=\"b\" c\r\n", "line 4"},
               {std::string("\0\x01\x02", 3), "line 1"}};
  std::filesystem::create_directories(own.store.parent_path());
  for (const auto& c : cases) {
    std::filesystem::remove(own.store.string() + ".damaged");
    writeFile(own.store, c.bytes);
    try {
      LoadApplicationSettings();
      FAIL() << "not raised: " << c.bytes;
    } catch (const RegistryStoreError& error) {
      EXPECT_THAT(error.what(), HasSubstr(own.store.string()));
      EXPECT_THAT(error.what(), HasSubstr(c.line));
    }
    EXPECT_THROW(WriteSetting("AutoDial", "0"), RegistryError);
    EXPECT_EQ(contentsOf(own.store), c.bytes);
    EXPECT_EQ(contentsOf(own.store.string() + ".damaged"), c.bytes);
  }
}

TEST_F(RegistryStore, GivesBackWhatTheOtherPlatformExchanges) {
  for (const RegistryFileValue& v : testing::exchangedValues()) {
    RegistryApi::setValue(HKEY_CURRENT_USER_VALUE, testing::kExchangePath, v.name, v.data);
  }
  EXPECT_EQ(contentsOf(own.store),
            formatRegistryFile(
                {{std::string("HKEY_CURRENT_USER\\") + testing::kExchangePath, testing::exchangedValues()}}));
}

TEST_F(RegistryStore, TakesFromOthersWhatTheyCouldRead) {
  std::vector<std::string> notices;
  SetNoticeSink([&](const std::string& line) { notices.push_back(line); });
  const auto settingsFolder = own.store.parent_path();
  const auto profiles = own.folder / "Profiles.ini";
  const auto mode = [](const auto& path) {
    return static_cast<int>(std::filesystem::status(path).permissions());
  };
  const auto writeBoth = [&](const std::string& text) {
    WriteSetting("AutoDial", text);
    EXPECT_TRUE(WritePrivateProfileString("s", "k", text, profiles.string()));
    EXPECT_EQ(mode(settingsFolder), 0700);
    EXPECT_EQ(mode(own.store), 0600);
    EXPECT_EQ(mode(profiles), 0600);
  };
  writeBoth("0");
  EXPECT_THAT(notices, ::testing::IsEmpty()) << "they are new";
  std::filesystem::permissions(settingsFolder, std::filesystem::perms(0755));
  std::filesystem::permissions(own.store, std::filesystem::perms(0640));
  std::filesystem::permissions(profiles, std::filesystem::perms(0604));
  writeBoth("1");
  EXPECT_THAT(notices, ElementsAre(HasSubstr(settingsFolder.string() + ". Its permissions are now 0700"),
                                   HasSubstr(own.store.string() + ". Its permissions are now 0600"),
                                   HasSubstr(profiles.string() + ". Its permissions are now 0600")));
  SetNoticeSink({});
}

TEST_F(RegistryStore, SaysWhenItCannotBeMade) {
  writeFile(own.folder / "blocked", "");
  testing::setEnvironment("XDG_CONFIG_HOME", (own.folder / "blocked").string());
  EXPECT_THROW(value("V").CreateKey(), RegistryError);
}

TEST_F(RegistryStore, KeepsTheDesktopsEntryInStep) {
  using mAutoRun::Mode;
  const auto desktopEntry = own.folder / "autostart" / (ProgramName() + ".desktop");
  for (const Mode mode : {Mode::off, Mode::always, Mode::once, Mode::always, Mode::off}) {
    mAutoRun::SetAutoRun(mode);
    EXPECT_EQ(std::filesystem::exists(desktopEntry), mode == Mode::always);
  }
  mAutoRun::SetAutoRun(Mode::always);
  const auto past = std::filesystem::last_write_time(desktopEntry) - std::chrono::hours(1);
  std::filesystem::last_write_time(desktopEntry, past);
  mAutoRun::SetAutoRun(Mode::always);
  EXPECT_EQ(std::filesystem::last_write_time(desktopEntry), past) << "it was right";
  writeFile(desktopEntry, "[Desktop Entry]\nHidden=true\n");
  mAutoRun::SetAutoRun(Mode::always);
  EXPECT_THAT(contentsOf(desktopEntry), HasSubstr("\nExec=\"" + ProgramFolder() + ProgramName() + "\"\n"));

  cRegistry run;
  run.ClassKey = HKEY_LOCAL_MACHINE_VALUE;
  run.SectionKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
  run.ValueKey = ProgramName();
  testing::setEnvironment("QUILLMOOR_TEST_FOLDER", "/opt");
  run.SetValue(std::string("%QUILLMOOR_TEST_FOLDER%/100%x%/program"));
  testing::unsetEnvironment("QUILLMOOR_TEST_FOLDER");
  EXPECT_THAT(contentsOf(desktopEntry), HasSubstr("\nExec=\"/opt/100%%x%%/program\"\n"))
      << "a value with references to the environment";
}

}  // namespace
}  // namespace quillmoor
