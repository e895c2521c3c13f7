// The registry class and what is built on it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
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

TEST_F(Registry, ReturnsWhatWasWritten) {
  using enum RegistryType;
  const std::string lines = "back\\slash \"quoted\" größer 日本 😀\r\nnext";
  const struct {
    std::uint32_t type;
    RegistryValue written, read;
    RegistryType stored;
  } cases[] = {
      {1, lines, lines, text},
      {1, std::string(), std::string(), text},
      {1, std::string("cut\0here", 8), std::string("cut"), text},
      {2, std::string("100 %"), std::string("100 %"), text},
      {1, std::string("%%"), std::string("%%"), text},
      {1, std::string("%QM_TEST%/x"), std::string("expanded/x"), expandText},
      {2, std::string("%a%"), std::string("%a%"), expandText},  // no such variable
      {1, std::int32_t{12}, std::string("12"), text},
      {3, Bytes(100, 200), Bytes(100, 200), binary},
      {4, std::int32_t{-2}, std::int32_t{-2}, dword},
      {4, std::int16_t{300}, std::int32_t{300}, dword},
  };
  testing::setEnvironment("QM_TEST", "expanded");
  for (const auto& c : cases) {
    value("Name", c.type).SetValue(c.written);
    cRegistry registry = value("nAME");
    registry.SectionKey = "SOFTWARE\\test";
    EXPECT_EQ(registry.Value(), c.read);
    EXPECT_EQ(RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE, "Software\\Test", "Name")->type, c.stored);
  }
  testing::unsetEnvironment("QM_TEST");
}

TEST_F(Registry, RaisesItsErrorWithWhatItWasAbout) {
  cRegistry nowhere = value("V"), verbs = value("");
  nowhere.ClassKey = 7;
  const struct {
    const char* text;
    std::function<void()> operation;
  } rows[] = {
      {"Failed to set registry value Key: 'HKEY_LOCAL_MACHINE',Section: 'Software\\Test',Key: 'V' to value: "
       "'x' (type mismatch",
       [] { value("V", 4).SetValue(std::string("x")); }},
      {"Failed to set ", [] { value("V", 3).SetValue(std::string("x")); }},
      {"Failed to open key '", [] { value("V").DeleteValue(); }},
      {"Failed to delete registry Key: '", [] { value("V").DeleteKey(); }},
      {"Failed to create registry Key: '", [&] { nowhere.CreateKey(); }},
      {"Error - attempt to create additional associations before class defined.",
       [&] {
         verbs.CreateAdditionalEXEAssociations({"a", "b", "c"});
       }},
      {"Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command", [&] {
         verbs.CreateEXEAssociation("/opt/p", "P.Class");
         verbs.CreateAdditionalEXEAssociations({"a", "b"});
       }}};
  for (const auto& row : rows) {
    try {
      row.operation();
      ADD_FAILURE() << "not raised: " << row.text;
    } catch (const RegistryError& error) {
      EXPECT_EQ(std::to_string(error.number()) + error.source(), "26001" + ProgramName() + ".cRegistry");
      EXPECT_THAT(error.what(), StartsWith(row.text));
    }
  }
}

TEST_F(Registry, ListsAndDeletesKeys) {
  for (const char* name : {"one", "two"}) value(name).SetValue(std::string(name));
  cRegistry below = value(""), top = value("");
  below.SectionKey += "\\Below\\Deep";
  below.CreateKey();
  EXPECT_THAT(top.EnumerateValues(), ElementsAre("one", "two"));
  EXPECT_THAT(top.EnumerateSections(), ElementsAre("Below"));
  top.SectionKey += "\\Below";
  EXPECT_TRUE(top.KeyExists()) << "a key above another exists";
  EXPECT_THROW(value("").DeleteKey(), RegistryError) << "it has keys below it";
  below.DeleteKey();
  top.CreateKey();  // so far it was only implied by the key below
  top.DeleteKey();
  value("").DeleteKey();
  EXPECT_FALSE(value("").KeyExists());
}

TEST_F(Registry, DefinesAFileClass) {
  cRegistry registry = value("");
  registry.CreateEXEAssociation("p", "P.Class", 2);
  registry.CreateAdditionalEXEAssociations({"peek", "&Peek", "p /k"});
  std::string texts;
  for (const std::string key :
       {"shell\\open", "shell\\print", "shell\\add", "shell\\new", "shell\\peek", "DefaultIcon"}) {
    for (const char* below : {"", "\\command"}) {
      registry.SectionKey = "SOFTWARE\\Classes\\P.Class\\" + key + below;
      const RegistryValue text = registry.Value();
      if (std::holds_alternative<std::string>(text)) texts += std::get<std::string>(text) + ";";
    }
  }
  EXPECT_EQ(texts, R"(&Open;p "%1";&Print;p /p "%1";&Install ;p /a "%1";&New;p /n "%1";&Peek;p /k;p,2;)");
}

TEST_F(Registry, LosesNoConcurrentWrite) {
  const auto writeMany = [](const std::string& prefix) {
    for (int i = 0; i < 20; ++i) value(prefix + std::to_string(i)).SetValue(std::string("x"));
  };
  std::thread other(writeMany, "a");
  writeMany("b");
  other.join();
  EXPECT_EQ(value("").EnumerateValues().size(), 40U);
}

TEST_F(Registry, KeepsTheSettingsUnderTheirKeys) {
  ApplicationSettings settings = LoadApplicationSettings();
  EXPECT_EQ(settings.MainWidth + settings.ConnectionDelay, 11685 + 5);
  EXPECT_TRUE(settings.Passive);
  EXPECT_FALSE(RegistryApi::keyExists(HKEY_LOCAL_MACHINE_VALUE, "Software")) << "reading writes nothing";
  WriteSetting("SchedualTusday", "1");
  WriteSetting("SchedualThrusday", "-1");
  WriteSetting("Passive", "False");
  WriteSetting("MainLeft", "1234.5");
  settings = LoadApplicationSettings();
  EXPECT_THAT(settings.ScheduleDays, ElementsAre(0, 0, 0, 1, 0, -1, 0, 0));
  EXPECT_FALSE(settings.Passive);
  EXPECT_EQ(settings.MainLeft, 1234.5);
  const char* const key = "Software\\Tarnick\\Quillmoor\\Settings";
  EXPECT_EQ(RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE, key, "MainLeft").value().bytes, "1234.5");
}

TEST_F(Registry, UsesTheDefaultOfANumberThatCannotBeRead) {
  using S = ApplicationSettings;
  const struct {
    const char *key, *text;
    std::int32_t S::*value;
    std::int32_t read;
    bool noted;
  } cases[] = {{"Timeout", "99999999999", &S::Timeout, 30, true},
               {"SchedualHour", "noon\n", &S::ScheduleHour, 12, true},
               {"FtpRetryCount", "", &S::FtpRetryCount, 5, true},
               {"ConnectionDelay", " 7 s", &S::ConnectionDelay, 7, false},
               {"LoginAttempts", "99", &S::LoginAttempts, 99, false},
               {"LoginAttempts", "100", &S::LoginAttempts, 0, true},
               {"NamesAsListed", "2", &S::NamesAsListed, 0, true}};
  for (const auto& c : cases) {
    WriteSetting(c.key, c.text);
    std::vector<std::string> notes;
    EXPECT_EQ(LoadApplicationSettings(&notes).*c.value, c.read) << c.key << " " << c.text;
    EXPECT_EQ(notes.size(), c.noted ? 1U : 0U) << c.key << " " << c.text;
    for (const std::string& note : notes) {
      EXPECT_THAT(note, StartsWith("The setting " + std::string(c.key) + " is stored as \""));
      EXPECT_THAT(note, HasSubstr(std::to_string(c.read) + " is used instead."));
    }
    RegistryApi::deleteValue(HKEY_LOCAL_MACHINE_VALUE, "Software\\Tarnick\\Quillmoor\\Settings", c.key);
  }
  WriteSetting("MainLeft", "1e999");
  EXPECT_EQ(LoadApplicationSettings().MainLeft, 1000);
}

TEST_F(Registry, StartsTheProgramWithTheSession) {
  using mAutoRun::Mode;
  const std::string run = "Software\\Microsoft\\Windows\\CurrentVersion\\Run", runOnce = run + "Once";
  const auto isIn = [](const std::string& key) {
    const auto data = RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE, key, ProgramName());
    return data && data->bytes == ProgramFolder() + ProgramName();
  };
  for (const Mode mode :
       {Mode::off, Mode::always, Mode::once, Mode::always, Mode::off, Mode::once, Mode::off}) {
    mAutoRun::SetAutoRun(mode);
    EXPECT_EQ(isIn(run), mode == Mode::always);
    EXPECT_EQ(isIn(runOnce), mode == Mode::once);
    const testing::OwnRegistry::NoWrites noWrites(own, {run.c_str(), runOnce.c_str()});
    EXPECT_NO_THROW(mAutoRun::SetAutoRun(mode)) << "nothing is to be written";
  }
}

}  // namespace
}  // namespace quillmoor
