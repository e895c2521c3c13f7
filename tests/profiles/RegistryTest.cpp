// The registry class, what is built on it, and the file that it is on this platform.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/ProgramFolder.h"
#include "platform/RegistryApi.h"
#include "platform/posix/RegistryFile.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/SettingsStore.h"
#include "profiles/cRegistry.h"
#include "profiles/mAutoRun.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TemporaryFolder;
using testing::writeFile;
using Bytes = std::vector<std::uint8_t>;

class Registry : public ::testing::Test {
 protected:
  // Left behind on purpose: no later test must ever reach the user's own settings.
  Registry() { ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); }

  static cRegistry value(const std::string& name, std::uint32_t type = 1) {
    cRegistry registry;
    registry.ClassKey = HKEY_LOCAL_MACHINE_VALUE;
    registry.SectionKey = "Software\\Test";
    registry.ValueKey = name;
    registry.ValueType = type;
    return registry;
  }

  TemporaryFolder folder;
  std::filesystem::path store = folder / "quillmoor" / "registry.reg";
};

TEST_F(Registry, GivesBackWhatWasWritten) {
  const struct {
    std::uint32_t type;
    RegistryValue written, read;
  } cases[] = {
      {1, std::string("plain"), std::string("plain")},
      {1, std::string("back\\slash \"quoted\" größer 日本\r\nnext"),
       std::string("back\\slash \"quoted\" größer 日本\r\nnext")},
      {1, std::string(), std::string()},
      {1, std::string("cut\0here", 8), std::string("cut")},
      {2, std::string("100 %"), std::string("100 %")},
      {1, std::string("%QM_TEST%/x"), std::string("expanded/x")},
      {1, std::string("%QM_NOT_SET%"), std::string("%QM_NOT_SET%")},
      {3, Bytes{0, 255, 16}, Bytes{0, 255, 16}},
      {3, Bytes(100, 7), Bytes(100, 7)},
      {4, std::int32_t{-2}, std::int32_t{-2}},
      {4, std::int16_t{300}, std::int32_t{300}},
  };
  ::setenv("QM_TEST", "expanded", 1);
  for (const auto& c : cases) {
    cRegistry registry = value("Name", c.type);
    registry.SetValue(c.written);
    registry.ValueKey = "nAME";
    registry.SectionKey = "SOFTWARE\\test";
    EXPECT_EQ(registry.Value(), c.read);
  }
  ::unsetenv("QM_TEST");
  cRegistry missing = value("Missing");
  missing.Default = std::string("default");
  EXPECT_EQ(missing.Value(), RegistryValue(std::string("default")));
}

TEST_F(Registry, StoresTextWithAReferenceAsExpandable) {
  const struct {
    const char* text;
    RegistryType type;
  } cases[] = {{"a", RegistryType::text},           {"50%", RegistryType::text},
               {"%a%", RegistryType::expandText},   {"%%", RegistryType::text},
               {"x%y%z", RegistryType::expandText}, {"%%%", RegistryType::expandText}};
  for (const auto& c : cases) {
    for (const std::uint32_t asked : {1U, 2U}) {
      value("Name", asked).SetValue(std::string(c.text));
      EXPECT_EQ(RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE, "Software\\Test", "Name")->type, c.type)
          << c.text;
    }
  }
}

TEST_F(Registry, RaisesItsOneErrorWithWhatItWasAbout) {
  const auto descriptionOf = [](auto operation) -> std::string {
    try {
      operation();
    } catch (const RegistryError& error) {
      EXPECT_EQ(error.number(), 26001);
      EXPECT_EQ(error.source(), ProgramName() + ".cRegistry");
      return error.what();
    }
    return "";
  };
  EXPECT_THAT(
      descriptionOf([] { value("V", 4).SetValue(std::string("x")); }),
      StartsWith(
          "Failed to set registry value Key: 'HKEY_LOCAL_MACHINE',Section: 'Software\\Test',Key: 'V' to "
          "value: 'x'"));
  EXPECT_THAT(descriptionOf([] { value("V", 3).SetValue(std::string("x")); }), HasSubstr("mismatch"));
  EXPECT_THAT(descriptionOf([] { value("V", 11).SetValue(std::int32_t{1}); }), HasSubstr("mismatch"));
  EXPECT_THAT(descriptionOf([] { value("V").DeleteValue(); }), StartsWith("Failed to open key '"));
  EXPECT_THAT(descriptionOf([] { value("V").DeleteKey(); }), StartsWith("Failed to delete registry Key: '"));
  cRegistry verbs = value("");
  EXPECT_EQ(descriptionOf([&] {
              verbs.CreateAdditionalEXEAssociations({"a", "b", "c"});
            }),
            "Error - attempt to create additional associations before class defined.");
  verbs.CreateEXEAssociation("/opt/p", "P.Class");
  EXPECT_EQ(descriptionOf([&] {
              verbs.CreateAdditionalEXEAssociations({"a", "b"});
            }),
            "Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command");
  writeFile(folder / "blocked", "");
  ::setenv("XDG_CONFIG_HOME", (folder / "blocked").c_str(), 1);
  EXPECT_THAT(descriptionOf([] { value("V").CreateKey(); }), StartsWith("Failed to create registry Key: '"));
}

TEST_F(Registry, KnowsItsKeysAndValues) {
  value("one").SetValue(std::string("1"));
  value("two").SetValue(std::string("2"));
  cRegistry below = value("x");
  below.SectionKey += "\\Below\\Deep";
  below.CreateKey();
  cRegistry top = value("");
  EXPECT_THAT(top.EnumerateValues(), ElementsAre("one", "two"));
  EXPECT_THAT(top.EnumerateSections(), ElementsAre("Below"));
  top.SectionKey += "\\Below";
  EXPECT_TRUE(top.KeyExists()) << "a key above another exists";
  EXPECT_THROW(value("").DeleteKey(), RegistryError) << "it has keys below it";
  below.DeleteKey();
  value("").DeleteKey();
  EXPECT_FALSE(value("").KeyExists());
}

TEST_F(Registry, DefinesAFileClass) {
  cRegistry registry = value("");
  registry.CreateEXEAssociation("C:\\P\\p.exe", "P.Class", 2);
  registry.CreateAdditionalEXEAssociations({"peek", "&Peek", "p.exe /k"});
  const struct {
    const char *key, *text;
  } cases[] = {{"shell\\open", "&Open"},
               {"shell\\open\\command", "C:\\P\\p.exe \"%1\""},
               {"shell\\print\\command", "C:\\P\\p.exe /p \"%1\""},
               {"shell\\add", "&Install "},
               {"shell\\add\\command", "C:\\P\\p.exe /a \"%1\""},
               {"shell\\new", "&New"},
               {"shell\\new\\command", "C:\\P\\p.exe /n \"%1\""},
               {"DefaultIcon", "C:\\P\\p.exe,2"},
               {"shell\\peek", "&Peek"},
               {"shell\\peek\\command", "p.exe /k"}};
  for (const auto& c : cases) {
    registry.SectionKey = std::string("SOFTWARE\\Classes\\P.Class\\") + c.key;
    EXPECT_EQ(registry.Value(), RegistryValue(std::string(c.text))) << c.key;
  }
}

TEST_F(Registry, IsAFileThatTheRegistryEditorImports) {
  value("text").SetValue(std::string("a\\b \"c\""));
  value("more").SetValue(std::string("ü"));
  value("number", 4).SetValue(std::int32_t{42});
  value("bytes", 3).SetValue(Bytes(30, 0xAB));
  value("ref").SetValue(std::string("%A%"));
  const std::string abs = [] {
    std::string text;
    for (int i = 0; i < 21; ++i) text += "ab,";
    return text;
  }();
  EXPECT_EQ(contentsOf(store),
            "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Test]\r\n"
            "\"text\"=\"a\\\\b \\\"c\\\"\"\r\n"
            "\"more\"=hex(1):fc,00,00,00\r\n"
            "\"number\"=dword:0000002a\r\n"
            "\"bytes\"=hex:" +
                abs +
                "\\\r\n  ab,ab,ab,ab,ab,ab,ab,ab,ab\r\n"
                "\"ref\"=hex(2):25,00,41,00,25,00,00,00\r\n");
}

TEST_F(Registry, ReadsWhatTheRegistryEditorExports) {
  const std::string text =
      "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Test]\r\n@=\"default\"\r\n"
      "\"text\"=\"two\r\nlines\"\r\n\"bytes\"=hex:01,\\\r\n  "
      "02,03\r\n\"n\"=dword:FFFFFFFE\r\n\"gone\"=\"x\"\r\n"
      "\"gone\"=-\r\n; a comment\r\n[HKEY_CURRENT_USER\\X]\r\n[-HKEY_CURRENT_USER\\X]\r\n";
  std::string utf16 = "\xFF\xFE";
  for (const char c : text) utf16.append({c, '\0'});
  for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, utf16}) {
    std::filesystem::create_directories(store.parent_path());
    writeFile(store, bytes);
    EXPECT_EQ(value("").Value(), RegistryValue(std::string("default")));
    EXPECT_EQ(value("text").Value(), RegistryValue(std::string("two\r\nlines")));
    EXPECT_EQ(value("bytes").Value(), RegistryValue(Bytes{1, 2, 3}));
    EXPECT_EQ(value("n").Value(), RegistryValue(std::int32_t{-2}));
    EXPECT_EQ(value("gone").Value(), RegistryValue());
    EXPECT_FALSE(RegistryApi::keyExists(HKEY_CURRENT_USER_VALUE, "X"));
  }
}

TEST_F(Registry, LeavesADamagedFileAlone) {
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
  std::filesystem::create_directories(store.parent_path());
  for (const auto& c : cases) {
    std::filesystem::remove(store.string() + ".damaged");
    writeFile(store, c.bytes);
    try {
      LoadApplicationSettings();
      FAIL() << "not raised: " << c.bytes;
    } catch (const RegistryStoreError& error) {
      EXPECT_THAT(error.what(), HasSubstr(store.string()));
      EXPECT_THAT(error.what(), HasSubstr(c.line));
    }
    EXPECT_THROW(WriteSetting("AutoDial", "0"), RegistryError);
    EXPECT_EQ(contentsOf(store), c.bytes);
    EXPECT_EQ(contentsOf(store.string() + ".damaged"), c.bytes);
  }
}

TEST_F(Registry, SurvivesRubbish) {
  std::mt19937 random(815);
  const std::string good = formatRegistryFile({{"HKEY_CURRENT_USER\\A",
                                                {{"t", {RegistryType::text, "x\\\"y"}},
                                                 {"e", {RegistryType::expandText, "%a%"}},
                                                 {"b", {RegistryType::binary, "0123"}}}}});
  int readable = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::string bytes = good;
    for (unsigned changes = random() % 4; changes > 0; --changes) {
      bytes[random() % bytes.size()] = "\"\\[]=:,-@;\r\n\0a"[random() % 14];
    }
    try {
      const auto keys = parseRegistryFile(bytes);
      parseRegistryFile(formatRegistryFile(keys));  // what was understood can be written
      ++readable;
    } catch (const RegistryFileError& error) {
      EXPECT_GE(error.line(), 1U);
    }
  }
  EXPECT_GT(readable, 1000);
}

TEST_F(Registry, LosesNoWriteOfTwoAtOnce) {
  const auto writeMany = [](const std::string& prefix) {
    for (int i = 0; i < 20; ++i) value(prefix + std::to_string(i)).SetValue(std::string("x"));
  };
  std::thread other(writeMany, "a");
  writeMany("b");
  other.join();
  EXPECT_EQ(value("").EnumerateValues().size(), 40U);
}

TEST_F(Registry, KeepsTheSettingsUnderTheirKeys) {
  const ApplicationSettings defaults;
  const ApplicationSettings fresh = LoadApplicationSettings();
  EXPECT_EQ(fresh.MainWidth, 11685);
  EXPECT_EQ(fresh.AutoDial, defaults.AutoDial);
  EXPECT_EQ(fresh.ConnectionDelay, 5);
  EXPECT_TRUE(fresh.Passive);
  EXPECT_EQ(fresh.ScheduleDays, (std::array<std::int32_t, 8>{}));
  EXPECT_THAT(LoadAsciiExtensions(), StartsWith(".txt|.text|"));
  EXPECT_FALSE(std::filesystem::exists(store)) << "reading writes nothing";

  WriteSetting("SchedualTusday", "1");
  WriteSetting("SchedualThrusday", "-1");
  WriteSetting("Passive", "False");
  WriteSetting("MainLeft", "1234.5");
  WriteSetting("ZipCopies", "a|b");
  WriteSetting("AsciiExts", ".x");
  const ApplicationSettings stored = LoadApplicationSettings();
  EXPECT_EQ(stored.ScheduleDays[3], 1);
  EXPECT_EQ(stored.ScheduleDays[5], -1);
  EXPECT_FALSE(stored.Passive);
  EXPECT_EQ(stored.MainLeft, 1234.5);
  EXPECT_EQ(stored.ZipCopies, "a|b");
  EXPECT_EQ(LoadAsciiExtensions(), ".x");
  EXPECT_THAT(contentsOf(store),
              HasSubstr("[HKEY_LOCAL_MACHINE\\Software\\Tarnick\\Quillmoor\\Settings]\r\n"));
  WriteSetting("AutoDial", "99999999999");
  EXPECT_THROW(LoadApplicationSettings(), std::overflow_error);
}

TEST_F(Registry, StartsTheProgramWithTheSession) {
  using mAutoRun::Mode;
  const auto isIn = [](const char* key) {
    const auto data = RegistryApi::queryValue(
        HKEY_LOCAL_MACHINE_VALUE, std::string("Software\\Microsoft\\Windows\\CurrentVersion\\") + key,
        ProgramName());
    return data && data->bytes == ProgramFolder() + ProgramName();
  };
  const auto desktopEntry = folder / "autostart" / (ProgramName() + ".desktop");
  mAutoRun::SetAutoRun(Mode::off);
  for (const Mode mode : {Mode::always, Mode::once, Mode::always, Mode::off, Mode::once, Mode::off}) {
    mAutoRun::SetAutoRun(mode);
    EXPECT_EQ(isIn("Run"), mode == Mode::always);
    EXPECT_EQ(isIn("RunOnce"), mode == Mode::once);
    EXPECT_EQ(std::filesystem::exists(desktopEntry), mode == Mode::always);
  }
  mAutoRun::SetAutoRun(Mode::always);
  EXPECT_THAT(contentsOf(desktopEntry), HasSubstr("\nExec=\"" + ProgramFolder() + ProgramName() + "\"\n"));
}

}  // namespace
}  // namespace quillmoor
