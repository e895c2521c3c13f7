// The rules of the settings form, with its dial-up part and its clock, and of the options form.
#include "profiles/SettingsEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "TestPlatform.h"
#include "connectivity/ScriptedDialUp.h"
#include "platform/registry/RegistryApi.h"
#include "platform/system/ProgramFolder.h"
#include "profiles/OptionsEditor.h"
#include "profiles/RegistryError.h"
#include "profiles/ScheduleText.h"
#include "profiles/ScriptedPrompts.h"
#include "profiles/SettingsStore.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

using ::testing::AllOf;
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
  settings.ScheduleHour = 99;  // no time of day
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
}

TEST_F(SettingsEditorTest, TheStartTimeTakesEffectAtOnceTheDaysDoNot) {
  editor.SetStartTime(0, 5);
  EXPECT_EQ(settings.ScheduleHour * 100 + settings.ScheduleMinute, 5);
  EXPECT_EQ(stored("SchedualHour") + ":" + stored("SchedualMinute"), "0:5");
  for (std::size_t day = 1; day <= 7; ++day) editor.SetDay(day, true);
  editor.SetDay(2, false);
  EXPECT_THAT(editor.days, ElementsAre(false, true, false, true, true, true, true, true));
  EXPECT_THAT(settings.ScheduleDays, ::testing::Each(0));
  EXPECT_THAT(LoadApplicationSettings().ScheduleDays, ElementsAre(0, 1, 0, 1, 1, 1, 1, 1));
}

TEST_F(SettingsEditorTest, StoresTheCheckBoxesTheEntryAndThePriority) {
  const char* const run = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
  for (const bool on : {false, true}) {
    editor.SetAutoDial(on);
    editor.SetAutoHangUp(on);
    editor.SetAutoStartUp(on);
    EXPECT_EQ(stored("AutoDial") + stored("AutoHangUp") + stored("AutoStartUp"), on ? "111" : "000");
    EXPECT_EQ(settings.AutoDial + settings.AutoHangUp + settings.AutoStartUp, on ? 3 : 0);
    EXPECT_EQ(RegistryApi::queryValue(HKEY_LOCAL_MACHINE_VALUE, run, ProgramName()).has_value(), on);
    EXPECT_EQ(editor.chkAutoDial && editor.chkAutoHangUp && editor.chkAutoStartUp, on);
  }
  editor.ChooseDialUpEntry("Home");
  EXPECT_EQ(stored("AutoDialUpConnection"), "Home");
  editor.MovePriority(2);
  EXPECT_EQ(editor.lblPriority + stored("ProcessPriority"), "Below Normal16384");
}

TEST_F(SettingsEditorTest, TakesTheLeadingNumbersOfTheTexts) {
  const struct {
    const char* typed;
    std::int32_t retries, delay, logins;
  } rows[] = {{"3", 3, 3, 3},
              {"12 times", 12, 12, 12},
              {"", 0, 0, 0},
              {"-1", 0, 0, 0},
              {"99999999999", 2147483646, 2147483, 99}};
  for (const auto& row : rows) {
    editor.SetRetryCount(row.typed);
    editor.SetConnectionDelay(row.typed);
    editor.SetLoginAttempts(row.typed);
    const ApplicationSettings next = LoadApplicationSettings();
    for (const ApplicationSettings& each : {settings, next})
      EXPECT_THAT(std::vector({each.FtpRetryCount, each.ConnectionDelay, each.LoginAttempts}),
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
  editor.lstExtensions = {".b", ".a"};
  using Row = std::pair<const char*, const char*>;
  for (const auto& [typed, box] :
       {Row(" TXT ", ".txt"), Row(".txt", ".txt"), Row("  ", ""), Row(".x|.y", ".x|.y")}) {
    editor.txtExtension = typed;
    editor.AddExtension();
    EXPECT_EQ(stored("AsciiExts"), ".b|.a|.txt") << typed;
    EXPECT_EQ(editor.txtExtension, box);
  }
  EXPECT_EQ(prompts.messages.size(), 1U) << "the last is two extensions";
  for (const std::optional<std::size_t> selected : {std::optional<std::size_t>(), {1}, {2}, {0}})
    editor.RemoveExtension(selected);
  EXPECT_EQ(stored("AsciiExts"), ".txt");
  editor.RestoreExtensions();
  EXPECT_EQ(stored("AsciiExts"), kDefaultAsciiExtensions);
}

TEST_F(SettingsEditorTest, SavesWhatItShows) {
  editor.startHour = 7;
  editor.startMinute = 8;
  editor.days[7] = true;
  editor.priorityPosition = 4;
  editor.lstExtensions = {".a", ".b"};
  editor.Save();
  std::string all;
  for (const char* key : {"SchedualSunday", "SchedualSaturday", "SchedualHour", "SchedualMinute", "AsciiExts",
                          "ProcessPriority", "AutoDial", "ConnectionDelay"})
    all += stored(key) + " ";
  EXPECT_EQ(all, "0 1 7 8 .a|.b 32768 nothing nothing ");
}

TEST_F(SettingsEditorTest, ReportsInOneMessageWhatCannotBeStored) {
  registry.refuseWrites();
  for (const bool on : {false, true}) editor.SetAutoStartUp(on);
  EXPECT_EQ(prompts.messages.size(), 1U);
  EXPECT_THAT(prompts.takeMessages().at(0).text,
              AllOf(HasSubstr("HKEY_LOCAL_MACHINE\\Software\\Tarnick\\Quillmoor\\Settings\\AutoStartUp\n"),
                    HasSubstr("forgotten when the program ends")));
  EXPECT_TRUE(editor.chkAutoStartUp && settings.AutoStartUp == 1);
  EXPECT_NE(editor.autoStartUpNote, "");
  editor.SetStartTime(1, 2);
  editor.SetAutoDial(false);
  editor.ChooseDialUpEntry("Home");
  editor.MovePriority(3);
  EXPECT_EQ(prompts.takeMessages().size(), 4U) << "one for each control";
  EXPECT_EQ(settings.ScheduleHour * 1000 + settings.ScheduleMinute * 10 + settings.AutoDial, 1020);
  editor.Save();
  EXPECT_THAT(prompts.messages, IsEmpty()) << "each has been reported";
}

class OptionsEditorTest : public ::testing::Test {
 protected:
  testing::OwnRegistry registry;
  testing::ScriptedPrompts prompts;
  ApplicationSettings settings;
  OptionsEditor editor{settings, prompts};
};

TEST_F(OptionsEditorTest, StoresEveryChange) {
  const struct {
    const char* key;
    void (*change)(OptionsEditor&);
    std::string stored;
  } rows[] = {{"BackupMode", [](auto& e) { e.ChooseFull(); }, "1"},
              {"BackupMode", [](auto& e) { e.ChooseIncremental(); }, "2"},
              {"UniqueBackup", [](auto& e) { e.SetUniqueBackup(true); }, "1"},
              {"NamesAsListed", [](auto& e) { e.SetNamesAsListed(true); }, "1"},
              {"CreateZip", [](auto& e) { e.SetCreateZip(false); }, "0"},
              {"SplitZip", [](auto& e) { e.SetSplitZip(true); }, "1"},
              {"ZipSelfExtract", [](auto& e) { e.SetZipSelfExtract(true); }, "1"},
              {"ZipPassword", [](auto& e) { e.SetZipPassword("geheim ü"); }, mRC4::Encipher("geheim ü")},
              {"RunBefore", [](auto& e) { e.SetRunText(0, "/bin/a b"); }, "/bin/a b"},
              {"RunAfter", [](auto& e) { e.SetRunText(1, "日本"); }, "日本"},
              {"ConnectBefore", [](auto& e) { e.SetRunText(2, "http://a/"); }, "http://a/"},
              {"ConnectAfter", [](auto& e) { e.SetRunText(3, "http://b/"); }, "http://b/"}};
  for (const auto& row : rows) {
    row.change(editor);
    EXPECT_EQ(ReadSetting(row.key, "nothing"), row.stored) << row.key;
  }
  EXPECT_EQ(settings.BackupMode * 10 + settings.UniqueBackup, 10)
      << "these two take effect at the next start";
  using S = ApplicationSettings;
  const S next = LoadApplicationSettings();
  for (const auto value : {&S::NamesAsListed, &S::CreateZip, &S::SplitZip, &S::ZipSelfExtract})
    EXPECT_EQ(settings.*value, next.*value);
  for (const auto value : {&S::ZipPassword, &S::RunBefore, &S::RunAfter, &S::ConnectBefore, &S::ConnectAfter})
    EXPECT_EQ(settings.*value, next.*value);
}

TEST_F(OptionsEditorTest, EnablesWhatTheModeAndTheArchiveAllow) {
  editor.SetUniqueBackup(true);
  for (const bool full : {false, true}) {
    full ? editor.ChooseFull() : editor.ChooseIncremental();
    EXPECT_EQ(editor.optFull, full);
    EXPECT_EQ(editor.chkUniqueBackupEnabled, full);
    EXPECT_EQ(editor.uniqueBackupNote.empty(), full);
    EXPECT_EQ(ReadSetting("UniqueBackup", ""), "1") << "disabled, not changed";
    editor.SetCreateZip(full);
    EXPECT_EQ(editor.archiveOptionsEnabled, full);
  }
}

TEST_F(OptionsEditorTest, TakesTheLeadingNumberOfTheSpanSize) {
  using Row = std::tuple<const char*, std::int32_t, bool>;
  for (const auto& [typed, number, noted] :
       {Row("0", 1, true), Row("abc", 1, true), Row("700 KB", 700, false), Row("2097151", 2097151, false),
        Row("2097152", 2097152, true), Row("99999999999", 2147483647, true), Row("1", 1, false)}) {
    editor.SetZipSpanSize(typed);
    EXPECT_EQ(editor.txtZipSpanSize, typed) << "left as typed";
    EXPECT_EQ(ReadSetting("ZipSpanSize", ""), std::to_string(number)) << typed;
    EXPECT_EQ(settings.ZipSpanSize, number) << typed;
    EXPECT_EQ(!editor.spanSizeNote.empty(), noted) << typed;
  }
}

TEST_F(OptionsEditorTest, IsFilledFromTheValuesInForce) {
  WriteSetting("BackupMode", "1");  // takes effect at the next start
  settings = {.AutoDialUpConnection = "",
              .ZipSpanSize = 700,
              .ZipPassword = mRC4::Encipher("secret"),
              .ZipCopies = "/b|/A||/a|/B",
              .RunBefore = "rb",
              .RunAfter = "ra",
              .ConnectBefore = "cb",
              .ConnectAfter = "ca"};
  for (const std::int32_t on : {1, 0, -1}) {
    settings.BackupMode = on == 1 ? 1 : 3;
    settings.UniqueBackup = settings.CreateZip = settings.SplitZip = settings.ZipSelfExtract = on;
    settings.NamesAsListed = on;
    const OptionsEditor opened(settings, prompts);
    for (const bool value :
         {opened.optFull, opened.chkUniqueBackupEnabled, opened.archiveOptionsEnabled, opened.chkUniqueBackup,
          opened.chkCreateZip, opened.chkSplitZip, opened.chkZipSelfExtract, opened.chkNamesAsListed})
      EXPECT_EQ(value, on == 1);
    EXPECT_EQ(opened.txtZipSpanSize + opened.txtZipPassword, "700secret");
    EXPECT_THAT(opened.lstZipCopies, ElementsAre("", "/A", "/a", "/b", "/B"));
    EXPECT_THAT(opened.txtRun, ElementsAre("rb", "ra", "cb", "ca"));
  }
}

TEST_F(OptionsEditorTest, KeepsTheFoldersForCopies) {
  settings.ZipCopies = "/b|/a";
  OptionsEditor opened(settings, prompts);
  for (const std::string chosen : {"", "/B", "/a", "/x|y"}) {
    if (!chosen.empty()) prompts.choice = chosen;
    opened.AddCopy();
    EXPECT_EQ(settings.ZipCopies, chosen.empty() ? "/b|/a" : "/a|/b|/B") << chosen;
  }
  EXPECT_EQ(prompts.choosers[1], "folder Select folder @ /b");
  EXPECT_EQ(prompts.choosers[2], "folder Select folder @ /B");
  EXPECT_EQ(prompts.takeMessages().size(), 1U) << "the last would be two folders";
  for (const std::optional<std::size_t> selected : {std::optional<std::size_t>(), {1}, {2}})
    opened.RemoveCopy(selected);
  EXPECT_EQ(settings.ZipCopies + LoadApplicationSettings().ZipCopies, "/a|/B/a|/B");
}

TEST_F(OptionsEditorTest, TakesTheChosenProgram) {
  for (const std::string chosen : {"", "/bin/true"}) {
    if (!chosen.empty()) prompts.choice = chosen;
    editor.BrowseRunText(1);
    EXPECT_EQ(editor.txtRun[1] + ReadSetting("RunAfter", ""), chosen + chosen);
  }
  EXPECT_EQ(prompts.choosers[1], "file Open: All Files (*.*)|*.* @ ");
}

TEST_F(OptionsEditorTest, StoresNoPasswordThatCannotBeEnciphered) {
  settings.ZipPassword = "?";
  OptionsEditor opened(settings, prompts);
  EXPECT_EQ(opened.txtZipPassword, "");
  EXPECT_THAT(opened.passwordNote, HasSubstr("cannot be read"));
  opened.SetZipPassword("пароль");
  EXPECT_EQ(opened.txtZipPassword, "пароль");
  EXPECT_THAT(opened.passwordNote, AllOf(HasSubstr("cannot be stored"), HasSubstr("no archive is made")));
  EXPECT_EQ(settings.ZipPassword + ReadSetting("ZipPassword", "nothing"), "?nothing");
  opened.SetZipPassword("typed");
  EXPECT_EQ(opened.passwordNote, "");
  opened.BeginZipPassword();
  for (const char* typed : {"a", "abп"}) opened.SetZipPassword(typed);
  EXPECT_THAT(opened.passwordNote, HasSubstr("previous one is still in use"));
  EXPECT_EQ(mRC4::Decipher(settings.ZipPassword), "typed") << "not a part of a password";
  EXPECT_EQ(ReadSetting("ZipPassword", "nothing"), settings.ZipPassword);
  opened.SetZipPassword("");
  opened.BeginZipPassword();
  opened.SetZipPassword("п");
  EXPECT_THAT(opened.passwordNote, HasSubstr("Archives have no password"));
}

TEST_F(OptionsEditorTest, NotesWhatIsNoAddress) {
  for (const std::size_t box : {0, 2, 3}) editor.SetRunText(box, "ftp://a b");
  EXPECT_THAT(editor.runNote, ElementsAre("", "", HasSubstr("http://"), HasSubstr("http://")));
  editor.SetRunText(2, "https://example.org/");
  EXPECT_EQ(editor.runNote[2], "");
}

TEST(SettingWriter, ReportsAFailureAgainOnlyAfterASuccess) {
  testing::ScriptedPrompts prompts;
  SettingWriter writer(prompts);
  const auto refused = [] { throw RegistryError("s", "d", "K\\V", "no right"); };
  writer.Attempt("V", refused);
  writer.Attempt("V", refused);
  EXPECT_EQ(prompts.takeMessages().size(), 1U);
  writer.Attempt("V", [] {});
  writer.Attempt("V", refused);
  EXPECT_THAT(prompts.takeMessages().at(0).text, HasSubstr("K\\V\nno right\n"));
  EXPECT_THROW(writer.Together([] { throw std::logic_error("no failure to store"); }), std::logic_error);
  writer.Attempt("W", [] { throw RegistryStoreError("the file is damaged"); });
  EXPECT_THAT(prompts.messages.at(0).text, HasSubstr("W\nthe file is damaged\n"));
}

TEST_F(SettingsEditorTest, ShowsTheStateOfTheDialUpConnection) {
  using Row = std::tuple<bool, std::int32_t, bool, const char*, int>;
  for (const auto& [busy, state, systemUp, shown, asked] :
       {Row(true, 2, false, "before, hang up", 1), Row(false, 8192, false, "Connected, hang up", 1),
        Row(false, 8193, true, "Connected, hang up", 2), Row(false, 8193, false, "Not Connected, dial", 2),
        Row(false, 3, false, "Not Connected, dial", 3)}) {
    panel.lblRasStatus = "before";
    dialUp.busy = busy;
    dialUp.state = state;
    dialUp.systemUp = systemUp;
    dialUp.systemAsked = 0;
    panel.RefreshStatus();
    EXPECT_EQ(panel.lblRasStatus + (panel.cmdDialEnabled ? ", dial" : "") +
                  (panel.cmdHangUpEnabled ? ", hang up" : ""),
              shown);
    EXPECT_EQ(dialUp.systemAsked, asked) << "once more at the end of every tick";
  }
  dialUp.onStateChange(8195);
  EXPECT_EQ(panel.lblRasStatus, "Starting a connection");
}

TEST_F(SettingsEditorTest, SelectsTheStoredDialUpEntryByItsExactName) {
  WriteSetting("AutoDialUpConnection", "Office");
  dialUp.entries = {"Home", "Office"};
  EXPECT_EQ(panel.LoadEntries().selected, 1U);
  dialUp.entries = {"office"};
  const auto list = panel.LoadEntries();
  EXPECT_EQ(list.names, dialUp.entries);
  EXPECT_EQ(list.selected, std::nullopt);
  EXPECT_EQ(settings.AutoDialUpConnection, "Office") << "an entry missing from the phonebook stays chosen";
  for (const char* const chosen : {"Home", ""}) panel.ChooseEntry(chosen);
  EXPECT_EQ(settings.AutoDialUpConnection + ReadSetting("AutoDialUpConnection", "?"), "HomeHome");
}

TEST_F(SettingsEditorTest, DialsTheChosenEntryAndHangsUpItsOwnConnection) {
  panel.Dial();
  dialUp.systemUp = true;  // made elsewhere
  panel.HangUp();
  EXPECT_THAT(dialUp.calls, IsEmpty()) << "no entry is chosen, no connection its own";
  settings.AutoDialUpConnection = "Home";
  for (const bool fails : {true, false}) {
    dialUp.dialThrows = fails;
    panel.Dial();
    EXPECT_EQ(panel.cmdDialEnabled, fails);
    EXPECT_EQ(panel.cmdHangUpEnabled, !fails);
  }
  dialUp.state = kDialUpConnected;
  for (const bool busy : {false, true}) {
    dialUp.busy = busy;
    panel.HangUp();
  }
  EXPECT_THAT(dialUp.calls, ElementsAre("dial Home", "dial Home", "hang up", "abort"));
}

TEST(ScheduleText, NamesTheDaysThatAreSelected) {
  EXPECT_EQ(ScheduleText({}, 12, 30), "Never: no weekday is selected");
  EXPECT_EQ(ScheduleText({1, 0, -1, 0, 0, 2, 0, 0}, 12, 30), "Never: no weekday is selected");
  EXPECT_EQ(ScheduleText({0, 0, 1}, 3, 5), "Every Monday at 03:05");
  EXPECT_EQ(ScheduleText({0, 1, 1, 0, 0, 0, 0, 1}, 23, 0), "Every Sunday, Monday and Saturday at 23:00");
  EXPECT_EQ(ScheduleText({0, 1, 1, 1, 1, 1, 1, 1}, 0, 0), "Every day at 00:00");
}

TEST(ClockText, CountsTwiceToTwelve) {
  const std::map<int, const char*> cases = {
      {0, "12:05:09 AM"}, {3, "03:05:09 AM"}, {11, "11:05:09 AM"}, {12, "12:05:09 PM"}, {23, "11:05:09 PM"}};
  for (const auto& [hour, text] : cases)
    EXPECT_EQ(ClockText(*MakeLocalDateTime({2026, 11, 24, hour, 5, 9, 0})), text);
}

}  // namespace
}  // namespace quillmoor
