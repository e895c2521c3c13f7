// The rules of the backup options form.
#include "profiles/OptionsEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPlatform.h"
#include "profiles/ScriptedPrompts.h"
#include "profiles/SettingsStore.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class OptionsEditorTest : public ::testing::Test {
 protected:
  testing::OwnRegistry registry;
  testing::ScriptedPrompts prompts;
  ApplicationSettings settings;
  OptionsEditor editor{settings, prompts};
};

TEST_F(OptionsEditorTest, StoresEveryChangeAndLetsRunsGoByMostOfThem) {
  const struct {
    const char* key;
    void (*change)(OptionsEditor&);
    std::string stored;
  } rows[] = {{"BackupMode", [](auto& e) { e.ChooseFull(); }, "1"},
              {"BackupMode", [](auto& e) { e.ChooseIncremental(); }, "2"},
              {"UniqueBackup", [](auto& e) { e.SetUniqueBackup(true); }, "1"},
              {"NamesAsListed", [](auto& e) { e.SetNamesAsListed(false); }, "0"},
              {"NamesAsListed", [](auto& e) { e.SetNamesAsListed(true); }, "1"},
              {"CreateZip", [](auto& e) { e.SetCreateZip(true); }, "1"},
              {"CreateZip", [](auto& e) { e.SetCreateZip(false); }, "0"},
              {"SplitZip", [](auto& e) { e.SetSplitZip(false); }, "0"},
              {"SplitZip", [](auto& e) { e.SetSplitZip(true); }, "1"},
              {"ZipSelfExtract", [](auto& e) { e.SetZipSelfExtract(true); }, "1"},
              {"ZipPassword", [](auto& e) { e.SetZipPassword(""); }, ""},
              {"ZipPassword", [](auto& e) { e.SetZipPassword("geheim ü"); }, mRC4::Encipher("geheim ü")},
              {"RunBefore", [](auto& e) { e.SetRunText(0, "/bin/a b"); }, "/bin/a b"},
              {"RunAfter", [](auto& e) { e.SetRunText(1, "日本"); }, "日本"},
              {"ConnectBefore", [](auto& e) { e.SetRunText(2, "http://a/"); }, "http://a/"},
              {"ConnectAfter", [](auto& e) { e.SetRunText(3, "http://b/"); }, "http://b/"}};
  for (const auto& row : rows) {
    row.change(editor);
    EXPECT_EQ(ReadSetting(row.key, "nothing"), row.stored) << row.key;
  }
  EXPECT_EQ(settings.BackupMode * 10 + settings.UniqueBackup, 10) << "these two count from the next start";
  const ApplicationSettings next = LoadApplicationSettings();
  EXPECT_EQ(next.BackupMode * 10 + next.UniqueBackup, 21);
  for (const auto value : {&ApplicationSettings::NamesAsListed, &ApplicationSettings::CreateZip,
                           &ApplicationSettings::SplitZip, &ApplicationSettings::ZipSelfExtract})
    EXPECT_EQ(settings.*value, next.*value);
  for (const auto value :
       {&ApplicationSettings::ZipPassword, &ApplicationSettings::RunBefore, &ApplicationSettings::RunAfter,
        &ApplicationSettings::ConnectBefore, &ApplicationSettings::ConnectAfter})
    EXPECT_EQ(settings.*value, next.*value);
  EXPECT_THAT(prompts.messages, IsEmpty());
}

TEST_F(OptionsEditorTest, EnablesWhatTheModeAndTheArchiveAllow) {
  editor.SetUniqueBackup(true);
  EXPECT_EQ(editor.uniqueBackupNote, "");
  editor.ChooseIncremental();
  EXPECT_FALSE(editor.optFull);
  EXPECT_NE(editor.uniqueBackupNote, "") << "it still holds";
  EXPECT_FALSE(editor.chkUniqueBackupEnabled);
  EXPECT_EQ(ReadSetting("UniqueBackup", ""), "1") << "disabled, not changed";
  editor.ChooseFull();
  EXPECT_TRUE(editor.optFull);
  EXPECT_TRUE(editor.chkUniqueBackupEnabled);
  EXPECT_EQ(editor.uniqueBackupNote, "");
  editor.SetSplitZip(true);
  editor.SetCreateZip(false);
  EXPECT_FALSE(editor.archiveOptionsEnabled);
  EXPECT_TRUE(editor.chkSplitZip);
  EXPECT_EQ(ReadSetting("SplitZip", ""), "1") << "disabled, not changed";
  editor.SetCreateZip(true);
  EXPECT_TRUE(editor.archiveOptionsEnabled);
}

TEST_F(OptionsEditorTest, TakesTheNumberOfTheSpanSize) {
  const struct {
    const char* typed;
    std::int32_t stored;
    bool noted;
  } rows[] = {{"0", 1, true},
              {"abc", 1, true},
              {"", 1, true},
              {"-5", 1, true},
              {"700 KB", 700, false},
              {"2097151", 2097151, false},
              {"2097152", 2097152, true},
              {"99999999999", 2147483647, true},
              {"1024", 1024, false}};
  for (const auto& row : rows) {
    editor.SetZipSpanSize(row.typed);
    EXPECT_EQ(editor.txtZipSpanSize, row.typed) << "left as typed";
    EXPECT_EQ(ReadSetting("ZipSpanSize", ""), std::to_string(row.stored)) << row.typed;
    EXPECT_EQ(settings.ZipSpanSize, row.stored) << row.typed;
    EXPECT_EQ(!editor.spanSizeNote.empty(), row.noted) << row.typed;
  }
}

TEST_F(OptionsEditorTest, IsFilledFromTheValuesThatRunsGoBy) {
  WriteSetting("BackupMode", "1");  // of a change that waits for the next start
  for (const std::int32_t on : {1, 0, -1}) {
    settings.BackupMode = on == 1 ? 1 : 3;
    settings.UniqueBackup = settings.CreateZip = settings.SplitZip = settings.ZipSelfExtract = on;
    settings.NamesAsListed = on;
    settings.ZipSpanSize = 700;
    settings.ZipPassword = mRC4::Encipher("secret");
    settings.ZipCopies = "/b|/A||/a|/B";
    settings.RunBefore = "rb";
    settings.RunAfter = "ra";
    settings.ConnectBefore = "cb";
    settings.ConnectAfter = "ca";
    const OptionsEditor opened(settings, prompts);
    EXPECT_EQ(opened.optFull, on == 1);
    EXPECT_EQ(opened.chkUniqueBackupEnabled, on == 1);
    EXPECT_EQ(opened.archiveOptionsEnabled, on == 1);
    for (const bool box : {opened.chkUniqueBackup, opened.chkCreateZip, opened.chkSplitZip,
                           opened.chkZipSelfExtract, opened.chkNamesAsListed})
      EXPECT_EQ(box, on == 1);
    EXPECT_EQ(opened.txtZipSpanSize + opened.txtZipPassword, "700secret");
    EXPECT_THAT(opened.lstZipCopies, ElementsAre("", "/A", "/a", "/b", "/B"));
    EXPECT_THAT(opened.txtRun, ElementsAre("rb", "ra", "cb", "ca"));
  }
}

TEST_F(OptionsEditorTest, KeepsTheFoldersForCopies) {
  settings.ZipCopies = "/b|/a";
  OptionsEditor opened(settings, prompts);
  const auto inForce = [&] {
    EXPECT_EQ(ReadSetting("ZipCopies", "nothing"), settings.ZipCopies);
    return settings.ZipCopies;
  };
  opened.AddCopy();  // no folder is chosen
  EXPECT_EQ(settings.ZipCopies, "/b|/a");
  prompts.choice = "/B";
  opened.AddCopy();
  EXPECT_EQ(inForce(), "/a|/b|/B");
  opened.AddCopy();
  EXPECT_EQ(inForce(), "/a|/b|/B") << "it is there already";
  prompts.choice = "/x|y";
  opened.AddCopy();
  EXPECT_EQ(inForce(), "/a|/b|/B") << "it would be two";
  EXPECT_EQ(prompts.takeMessages().size(), 1U);
  EXPECT_THAT(prompts.choosers, ElementsAre("folder Select folder @ /b", "folder Select folder @ /b",
                                            "folder Select folder @ /B", "folder Select folder @ /B"));
  opened.RemoveCopy(std::nullopt);
  opened.RemoveCopy(1);
  EXPECT_EQ(inForce(), "/a|/B");
  opened.RemoveCopy(0);
  opened.RemoveCopy(0);
  EXPECT_EQ(inForce(), "");
  EXPECT_EQ(ReadSetting("ZipCopies", "nothing"), "");
}

TEST_F(OptionsEditorTest, TakesTheChosenProgram) {
  editor.BrowseRunText(1);
  EXPECT_EQ(ReadSetting("RunAfter", "nothing"), "nothing");
  prompts.choice = "/bin/true";
  editor.BrowseRunText(1);
  EXPECT_EQ(editor.txtRun[1] + settings.RunAfter + ReadSetting("RunAfter", ""),
            "/bin/true/bin/true/bin/true");
  EXPECT_THAT(prompts.choosers,
              ElementsAre("file Open: All Files (*.*)|*.* @ ", "file Open: All Files (*.*)|*.* @ "));
}

TEST_F(OptionsEditorTest, StoresNoPasswordThatNobodyCouldType) {
  settings.ZipPassword = "?";
  OptionsEditor opened(settings, prompts);
  EXPECT_EQ(opened.txtZipPassword, "");
  EXPECT_THAT(opened.passwordNote, HasSubstr("cannot be read"));
  EXPECT_EQ(settings.ZipPassword, "?");
  opened.SetZipPassword("пароль");
  EXPECT_EQ(opened.txtZipPassword, "пароль");
  EXPECT_THAT(opened.passwordNote, HasSubstr("cannot be kept"));
  EXPECT_EQ(settings.ZipPassword + ReadSetting("ZipPassword", "nothing"), "?nothing");
  EXPECT_THAT(opened.passwordNote, HasSubstr("no archive is made"));
  opened.SetZipPassword("typed");
  EXPECT_EQ(opened.passwordNote, "");
  EXPECT_EQ(mRC4::Decipher(settings.ZipPassword), "typed");
  opened.BeginZipPassword();
  for (const char* typed : {"a", "ab", "abп"}) opened.SetZipPassword(typed);
  EXPECT_THAT(opened.passwordNote, HasSubstr("one before still holds"));
  EXPECT_EQ(mRC4::Decipher(settings.ZipPassword), "typed") << "a piece of a password";
  EXPECT_EQ(ReadSetting("ZipPassword", "nothing"), settings.ZipPassword);
  opened.SetZipPassword("");
  opened.BeginZipPassword();
  opened.SetZipPassword("п");
  EXPECT_EQ(settings.ZipPassword, "");
  EXPECT_THAT(opened.passwordNote, HasSubstr("Archives get no password"));
}

TEST_F(OptionsEditorTest, SaysWhatAnAddressIs) {
  for (const std::size_t box : {0, 2, 3}) editor.SetRunText(box, "ftp://a b");
  EXPECT_THAT(editor.runNote, ElementsAre("", "", HasSubstr("http://"), HasSubstr("http://")));
  editor.SetRunText(2, "https://example.org/");
  EXPECT_EQ(editor.runNote[2], "");
}

}  // namespace
}  // namespace quillmoor
