// The rules of the settings form, and how a form stores and tells.
#include "profiles/SettingsEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPlatform.h"
#include "connectivity/ScriptedDialUp.h"
#include "platform/registry/RegistryApi.h"
#include "platform/system/ProgramFolder.h"
#include "profiles/RegistryError.h"
#include "profiles/ScriptedPrompts.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class SettingsEditorTest : public ::testing::Test {
 protected:
  static std::string stored(const char* key) { return ReadSetting(key, "nothing"); }
  testing::OwnRegistry registry;
  testing::ScriptedPrompts prompts;
  ApplicationSettings settings;
  testing::ScriptedDialUp dialUp;
  DialUpPanel panel{dialUp, settings};
  SettingsEditor editor{settings, panel, prompts};
};

TEST_F(SettingsEditorTest, IsFilledFromTheSettings) {
  settings.ScheduleHour = 99;  // no time of day: the picker has none such
  settings.ScheduleMinute = -1;
  settings.ScheduleDays = {1, 1, 0, -1, 2, 0, 0, 1};
  settings.AutoDial = settings.AutoHangUp = settings.AutoStartUp = -1;
  settings.FtpRetryCount = 7;
  settings.ConnectionDelay = 8;
  settings.LoginAttempts = 9;
  settings.ProcessPriority = 12;
  WriteSetting("AsciiExts", ".b|.a");
  const SettingsEditor opened(settings, panel, prompts);
  EXPECT_EQ(std::to_string(opened.startHour) + ":" + std::to_string(opened.startMinute), "23:0");
  EXPECT_THAT(opened.days, ElementsAre(false, true, false, false, false, false, false, true));
  EXPECT_FALSE(opened.chkAutoDial || opened.chkAutoHangUp || opened.chkAutoStartUp);
  EXPECT_EQ(opened.txtRetryCount + opened.txtConnectionDelay + opened.txtLoginAttempts, "789");
  EXPECT_THAT(opened.lstExtensions, ElementsAre(".b", ".a"));
  EXPECT_EQ(opened.lblPriority + " at " + std::to_string(opened.priorityPosition), "Unknown:12 at 7");
  EXPECT_EQ(settings.ScheduleHour, 99) << "looking changes nothing";
  EXPECT_EQ(editor.lstExtensions.size(), 41U) << "nothing stored: the default list";
}

TEST_F(SettingsEditorTest, TakesTheStartTimeAtOnceButNoDay) {
  editor.SetStartTime(0, 5);
  EXPECT_EQ(settings.ScheduleHour * 100 + settings.ScheduleMinute, 5);
  EXPECT_EQ(stored("SchedualHour") + ":" + stored("SchedualMinute"), "0:5");
  for (std::size_t day = 1; day <= 7; ++day) editor.SetDay(day, true);
  editor.SetDay(2, false);
  EXPECT_THAT(editor.days, ElementsAre(false, true, false, true, true, true, true, true));
  EXPECT_THAT(settings.ScheduleDays, ::testing::Each(0)) << "they count from the next start";
  EXPECT_THAT(LoadApplicationSettings().ScheduleDays, ElementsAre(0, 1, 0, 1, 1, 1, 1, 1));
}

TEST_F(SettingsEditorTest, StoresTheCheckBoxesTheEntryAndThePriority) {
  for (const bool on : {false, true}) {
    const std::string text = on ? "1" : "0";
    editor.SetAutoDial(on);
    editor.SetAutoHangUp(on);
    editor.SetAutoStartUp(on);
    EXPECT_EQ(stored("AutoDial") + stored("AutoHangUp") + stored("AutoStartUp"), text + text + text);
    EXPECT_EQ(settings.AutoDial + settings.AutoHangUp + settings.AutoStartUp, on ? 3 : 0);
    EXPECT_EQ(RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE,
                                      "Software\\Microsoft\\Windows\\CurrentVersion\\Run", ProgramName())
                  .has_value(),
              on);
    EXPECT_EQ(editor.chkAutoDial && editor.chkAutoHangUp && editor.chkAutoStartUp, on);
    EXPECT_EQ(editor.autoStartUpNote, "");
  }
  editor.ChooseDialUpEntry("Home");
  EXPECT_EQ(stored("AutoDialUpConnection") + settings.AutoDialUpConnection, "HomeHome");
  editor.MovePriority(2);
  EXPECT_EQ(editor.lblPriority + stored("ProcessPriority"), "Below Normal16384");
}

TEST_F(SettingsEditorTest, TakesTheNumbersThatLeadTheTexts) {
  const struct {
    const char* typed;
    std::int32_t retries, delay, logins;
  } rows[] = {{"3", 3, 3, 3},   {"12 times", 12, 12, 12}, {"", 0, 0, 0},
              {"abc", 0, 0, 0}, {"-1", 0, 0, 0},          {"99999999999", 2147483646, 2147483, 99}};
  for (const auto& row : rows) {
    editor.SetRetryCount(row.typed);
    editor.SetConnectionDelay(row.typed);
    editor.SetLoginAttempts(row.typed);
    EXPECT_EQ(settings.FtpRetryCount, row.retries) << row.typed;
    EXPECT_EQ(settings.ConnectionDelay, row.delay) << row.typed;
    EXPECT_EQ(settings.LoginAttempts, row.logins) << row.typed;
    const ApplicationSettings next = LoadApplicationSettings();
    EXPECT_THAT(std::vector({next.FtpRetryCount, next.ConnectionDelay, next.LoginAttempts}),
                ElementsAre(row.retries, row.delay, row.logins));
    EXPECT_THAT(std::vector({editor.txtRetryCount, editor.txtConnectionDelay, editor.txtLoginAttempts}),
                ::testing::Each(row.typed));
    const bool meant = row.typed == std::string("3");
    for (const std::string& note :
         {editor.retryCountNote, editor.connectionDelayNote, editor.loginAttemptsNote})
      EXPECT_EQ(note.empty(), meant) << row.typed;
  }
}

TEST_F(SettingsEditorTest, KeepsTheAsciiExtensions) {
  WriteSetting("AsciiExts", ".b|.a");
  SettingsEditor opened(settings, panel, prompts);
  const struct {
    const char* typed;
    const char* list;
    const char* box;
  } rows[] = {{" TXT ", ".b|.a|.txt", ".txt"},
              {".txt", ".b|.a|.txt", ".txt"},
              {"  ", ".b|.a|.txt", ""},
              {".x|.y", ".b|.a|.txt", ".x|.y"}};
  for (const auto& row : rows) {
    opened.txtExtension = row.typed;
    opened.AddExtension();
    EXPECT_EQ(stored("AsciiExts"), row.list) << row.typed;
    EXPECT_EQ(opened.txtExtension, row.box);
  }
  EXPECT_EQ(prompts.takeMessages().size(), 1U);
  opened.RemoveExtension(std::nullopt);
  opened.RemoveExtension(1);
  EXPECT_EQ(stored("AsciiExts"), ".b|.txt");
  opened.RemoveExtension(0);
  opened.RemoveExtension(0);
  EXPECT_EQ(stored("AsciiExts"), "");
  opened.RestoreExtensions();
  EXPECT_EQ(stored("AsciiExts"), kDefaultAsciiExtensions);
  EXPECT_EQ(opened.lstExtensions.size(), 41U);
}

TEST_F(SettingsEditorTest, SavesWhatItShows) {
  editor.startHour = 7;
  editor.startMinute = 8;
  editor.days[7] = true;
  editor.priorityPosition = 4;
  editor.lstExtensions = {".a", ".b"};
  editor.Save();
  for (std::size_t day = 1; day <= 7; ++day) EXPECT_EQ(stored(kScheduleDayKeys[day]), day == 7 ? "1" : "0");
  EXPECT_EQ(stored("SchedualHour") + ":" + stored("SchedualMinute"), "7:8");
  EXPECT_EQ(stored("AsciiExts") + " " + stored("ProcessPriority"), ".a|.b 32768");
  for (const char* key : {"AutoDial", "ConnectionDelay", "LoginAttempts"})
    EXPECT_EQ(stored(key), "nothing") << key;
}

TEST_F(SettingsEditorTest, TellsInOneMessageOfWhatCannotBeStored) {
  registry.refuseWrites();
  editor.SetAutoStartUp(false);
  editor.SetAutoStartUp(true);
  ASSERT_EQ(prompts.messages.size(), 1U);
  EXPECT_THAT(prompts.messages[0].text,
              HasSubstr("HKEY_LOCAL_MACHINE\\Software\\Tarnick\\Quillmoor\\Settings\\AutoStartUp\n"));
  EXPECT_THAT(prompts.takeMessages()[0].text, HasSubstr("forgotten when the program ends"));
  EXPECT_EQ(settings.AutoStartUp, 1);
  EXPECT_TRUE(editor.chkAutoStartUp);
  EXPECT_NE(editor.autoStartUpNote, "");

  editor.SetStartTime(1, 2);
  editor.SetAutoDial(false);
  editor.ChooseDialUpEntry("Home");
  editor.MovePriority(3);
  EXPECT_EQ(prompts.takeMessages().size(), 4U) << "one for each control";
  EXPECT_EQ(settings.ScheduleHour * 100 + settings.ScheduleMinute, 102);
  EXPECT_EQ(settings.AutoDialUpConnection, "Home");
  EXPECT_EQ(settings.AutoDial, 0);
  editor.Save();
  EXPECT_THAT(prompts.messages, IsEmpty()) << "whoever leaves has been told";
}

TEST(SettingWriter, TellsAgainOfWhatCouldBeStoredMeanwhile) {
  testing::ScriptedPrompts prompts;
  SettingWriter writer(prompts);
  const auto refused = [] { throw RegistryError("s", "d", "K\\V", "no right"); };
  writer.Attempt("V", refused);
  writer.Attempt("V", refused);
  EXPECT_EQ(prompts.takeMessages().size(), 1U);
  writer.Attempt("V", [] {});
  writer.Attempt("V", refused);
  ASSERT_EQ(prompts.messages.size(), 1U);
  EXPECT_THAT(prompts.messages[0].text, HasSubstr("K\\V\nno right\n"));
  EXPECT_THROW(writer.Together([] { throw std::logic_error("no failure to store"); }), std::logic_error);
  writer.Attempt("W", [] { throw RegistryStoreError("the file is damaged"); });
  EXPECT_THAT(prompts.messages[1].text, HasSubstr("W\nthe file is damaged\n"));
}

}  // namespace
}  // namespace quillmoor
