// The registry class and what is built on it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/registry/RegistryApi.h"
#include "platform/system/ProgramFolder.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/RegistryFixture.h"
#include "profiles/SettingsStore.h"
#include "profiles/mAutoRun.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;

using Registry = RegistryFixture;

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
  testing::setEnvironment("QM_TEST", "expanded");
  for (const auto& c : cases) {
    cRegistry registry = value("Name", c.type);
    registry.SetValue(c.written);
    registry.ValueKey = "nAME";
    registry.SectionKey = "SOFTWARE\\test";
    EXPECT_EQ(registry.Value(), c.read);
  }
  testing::unsetEnvironment("QM_TEST");
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
  EXPECT_THAT(descriptionOf([] {
                cRegistry nowhere = value("V");
                nowhere.ClassKey = 7;
                nowhere.CreateKey();
              }),
              StartsWith("Failed to create registry Key: '"));
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
  top.CreateKey();  // where it had only been there as the way to the one below
  top.DeleteKey();
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
  EXPECT_FALSE(RegistryApi::keyExists(HKEY_LOCAL_MACHINE_VALUE, "Software\\Tarnick"))
      << "reading writes nothing";

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
  const auto data = RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE,
                                            "Software\\Tarnick\\Quillmoor\\Settings", "ZipCopies");
  ASSERT_TRUE(data);
  EXPECT_EQ(data->bytes, "a|b");
}

TEST_F(Registry, TakesTheDefaultOfANumberThatCannotBeRead) {
  const struct {
    const char *key, *text;
    std::int32_t ApplicationSettings::*value;
    std::int32_t read;
    bool noted;
  } cases[] = {{"Timeout", "99999999999", &ApplicationSettings::Timeout, 30, true},
               {"RemotePort", "-99999999999", &ApplicationSettings::RemotePort, 21, true},
               {"SchedualHour", "noon\n", &ApplicationSettings::ScheduleHour, 12, true},
               {"FtpRetryCount", "", &ApplicationSettings::FtpRetryCount, 5, true},
               {"ConnectionDelay", " 7 s", &ApplicationSettings::ConnectionDelay, 7, false},
               {"SchedualMinute", "-1", &ApplicationSettings::ScheduleMinute, -1, false},
               {"LoginAttempts", "99", &ApplicationSettings::LoginAttempts, 99, false},
               {"LoginAttempts", "100", &ApplicationSettings::LoginAttempts, 0, true},
               {"LoginAttempts", "-1", &ApplicationSettings::LoginAttempts, 0, true},
               {"NamesAsListed", "2", &ApplicationSettings::NamesAsListed, 0, true}};
  WriteSetting("MainLeft", "1e999");
  for (const auto& c : cases) {
    WriteSetting(c.key, c.text);
    std::vector<std::string> notes;
    EXPECT_EQ(LoadApplicationSettings(&notes).*c.value, c.read) << c.key << " " << c.text;
    ASSERT_FALSE(notes.empty());
    EXPECT_THAT(notes[0], HasSubstr("MainLeft is stored as \"1e999\"")) << "the table's order";
    if (c.noted) {
      EXPECT_THAT(notes.back(), StartsWith("The setting " + std::string(c.key) + " is stored as \""));
      EXPECT_THAT(notes.back(), HasSubstr(std::to_string(c.read) + " is used instead."));
    }
    EXPECT_EQ(notes.size(), c.noted ? 2U : 1U) << c.key << " " << c.text;
    RegistryApi::deleteValue(HKEY_LOCAL_MACHINE_VALUE, "Software\\Tarnick\\Quillmoor\\Settings", c.key);
  }
  EXPECT_EQ(LoadApplicationSettings().MainLeft, 1000);
}

TEST_F(Registry, StartsTheProgramWithTheSession) {
  using mAutoRun::Mode;
  constexpr const char* kRun = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
  constexpr const char* kRunOnce = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
  const auto isIn = [](const char* key) {
    const auto data = RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE, key, ProgramName());
    return data && data->bytes == ProgramFolder() + ProgramName();
  };
  for (const Mode mode :
       {Mode::off, Mode::always, Mode::once, Mode::always, Mode::off, Mode::once, Mode::off}) {
    mAutoRun::SetAutoRun(mode);
    EXPECT_EQ(isIn(kRun), mode == Mode::always);
    EXPECT_EQ(isIn(kRunOnce), mode == Mode::once);
    const testing::OwnRegistry::NoWrites noWrites(own, {kRun, kRunOnce});
    EXPECT_NO_THROW(mAutoRun::SetAutoRun(mode)) << "as it is already";
  }
}

}  // namespace
}  // namespace quillmoor
