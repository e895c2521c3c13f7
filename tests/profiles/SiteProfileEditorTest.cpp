// The rules of the site profile form.
#include "profiles/SiteProfileEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/system/ProgramFolder.h"
#include "profiles/ScriptedPrompts.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mIni.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Answer = UserPrompts::Answer;

Message error(const std::string& text) {
  return {"Error", text, Message::Buttons::ok, Message::Icon::critical, 1};
}

class SiteProfileEditorTest : public ::testing::Test {
 protected:
  SiteProfileEditorTest() { std::filesystem::create_directory(folder / "program"); }

  void fill(const std::string& name) {
    editor.shown.name = name;
    editor.shown.Host = "ftp.example.org";
    editor.shown.UserID = "joe";
    editor.shown.Password = "secret";
    editor.shown.SaveTo = "/backup/";
    editor.shown.Folders = {"/www", "/cgi-bin"};
  }
  void save(const std::string& name) {
    editor.Add();
    fill(name);
    ASSERT_TRUE(editor.SaveSiteProfile());
  }

  testing::TemporaryFolder folder;
  std::string file = (folder / "program" / "Profiles.ini").string();
  testing::ScriptedPrompts prompts;
  LocalDateTime now = *MakeLocalDateTime({2011, 5, 7, 14, 3, 9, 0});
  SiteProfileEditor editor{file, prompts, [this] { return now; }};
};

TEST_F(SiteProfileEditorTest, RefusesWhatIsMissingOrCannotBeKeptInOrder) {
  // The last check comes first: each row adds a fault that is reported before those of the rows above it.
  const struct {
    const char* focus;
    void (*spoil)(SiteProfile&);
    const char* message;
  } rows[] = {{"Folders", [](auto& p) { p.Folders.assign(2, std::string(60'000, 'a')); },
               "The list of folders is too long for the profile file, which keeps 99997 characters."},
              {"Folders", [](auto& p) { p.Folders = {"/a~|~/b"}; }, "\"/a~|~/b\" cannot be a folder."},
              {"Certificate", [](auto& p) { p.Certificate = "12:34"; },
               "Certificate takes the 64 hexadecimal digits of a SHA-256 fingerprint."},
              {"SaveTo", [](auto& p) { p.SaveTo = "/日本"; },
               "SaveTo holds a character that the profile file cannot keep: /日本"},
              {"Account", [](auto& p) { p.Account = "\n"; },
               "Account cannot hold a line break or another control character."},
              {"Password", [](auto& p) { p.Password = "пароль"; },
               "Password holds a character that the profile file cannot keep."},
              {"name", [](auto& p) { p.name = "日本"; },
               "The name holds a character that the profile file cannot keep: 日本"},
              {"Security", [](auto& p) { p.Security = 1, p.ProxyType = 4; },
               "No encrypted connection (TLS) can pass a proxy of the type \"USER Logon\"."},
              {"Folders", [](auto& p) { p.Folders = {}; }, "Please select the folders to backup"},
              {"SaveTo", [](auto& p) { p.SaveTo = " "; }, "Please select a directory to save to."},
              {"Port", [](auto& p) { p.Port = " "; }, "Please enter the FTP post, the default is 21"},
              {"Password", [](auto& p) { p.Password = " "; }, "Please enter the FTP account Password"},
              {"UserID", [](auto& p) { p.UserID = " "; }, "Please enter the ftp account User ID"},
              {"Host", [](auto& p) { p.Host = " "; }, "Please enter the ftp host name or IP address"},
              {"name", [](auto& p) { p.name = "SITE"; },
               "Profile name already exists, please enter a different name"},
              {"name", [](auto& p) { p.name = " "; }, "Please enter a name for this profile"}};
  save("site");
  const std::string before = contentsOf(file);
  editor.Add();
  fill("new");
  for (const auto& row : rows) {
    row.spoil(editor.shown);
    EXPECT_FALSE(editor.SaveSiteProfile());
    EXPECT_THAT(prompts.takeMessages(), ElementsAre(error(row.message)));
    EXPECT_EQ(editor.focus, row.focus) << row.message;
  }
  EXPECT_EQ(contentsOf(file), before);
  fill(" new ");
  editor.shown.Account = "";
  editor.shown.ProxyType = 0;
  editor.shown.Certificate = " AB:CD" + std::string(60, 'f') + " ";
  editor.shown.Port = editor.shown.Timeout = "abc";
  editor.shown.Folders = {std::string(60'000, 'a'), std::string(39'994, 'b')};  // the longest list
  EXPECT_TRUE(editor.SaveSiteProfile());
  EXPECT_EQ(editor.focus, "");
  EXPECT_EQ(editor.shown.name + editor.shown.Port + editor.shown.Timeout, "new2160");
  const SiteProfile stored = LoadSiteProfile("new", file);
  EXPECT_EQ(stored.Port + stored.Timeout, "2160") << "corrected without a message";
  EXPECT_EQ(stored.Certificate, "abcd" + std::string(60, 'f'));
  EXPECT_EQ(stored.Folders, editor.shown.Folders);
}

TEST_F(SiteProfileEditorTest, AddResetsAllButThreeFields) {
  save("site");
  for (const ProfileField& field : kProfileFields) TakeStored(editor.shown, field, "7");
  editor.shown.passwordUnreadable = true;
  editor.ItemClicked(kAddItem);
  SiteProfile defaults;
  defaults.RunURL = defaults.RunProgram = defaults.DefaultDir = "7";
  for (const ProfileField& field : kProfileFields)
    EXPECT_EQ(StoredText(editor.shown, field), StoredText(defaults, field)) << field.key;
  EXPECT_EQ(editor.shown.Port + editor.shown.Timeout + editor.shown.SaveTo, "2160" + ProgramFolder());
  EXPECT_EQ(editor.shown.name + editor.shown.ID + editor.currentName() + editor.passwordNote(), "");
  EXPECT_THAT(editor.shown.Folders, IsEmpty());
}

TEST_F(SiteProfileEditorTest, OpensListsAndSaves) {
  save("b");
  EXPECT_THAT(editor.profileItems, IsEmpty()) << "the item refreshes the list, not the save";
  for (const std::string name : {"A", ""}) {
    editor.shown.name = name;
    editor.ItemClicked(kSaveItem);
    EXPECT_EQ(editor.profileItems.size(), name == "A" ? 2U : 1U) << "also when nothing was saved";
    DeleteSiteProfile("A", file);
  }
  for (const int id : {editor.profileItems.at(0).id, 4711}) {
    editor.ItemClicked(id);
    EXPECT_EQ(editor.currentName() + editor.shown.name + editor.shown.Host, "bbftp.example.org");
  }
}

TEST_F(SiteProfileEditorTest, RenamesAProfileButNotANewOneOverAnother) {
  save("other");
  editor.EditSiteProfile("other");
  save("site");
  now += std::chrono::hours(1);
  for (const char* name : {"SITE ", "renamed"}) {
    editor.shown.name = name;
    EXPECT_TRUE(editor.SaveSiteProfile()) << name;
  }
  EXPECT_EQ(editor.currentName(), "renamed");
  EXPECT_THAT(LoadSitesInfo(file), ElementsAre("other", "renamed", "SITE")) << "the old section stays";
  EXPECT_EQ(LoadSiteProfile("renamed", file).ID, "20110507140309");
  editor.shown.name = "Other";
  EXPECT_FALSE(editor.SaveSiteProfile());
  editor.EditSiteProfile("SITE");
  editor.shown.name = "Other";
  EXPECT_TRUE(editor.SaveSiteProfile()) << "a stored profile that was opened may replace another";
}

TEST_F(SiteProfileEditorTest, DeletesTheOpenProfileWhenConfirmed) {
  editor.ItemClicked(kDeleteItem);
  EXPECT_THAT(prompts.messages, IsEmpty()) << "nothing is open";
  save("site");
  for (const Answer answer : {Answer::no, Answer::yes}) {
    prompts.answer = answer;
    editor.ItemClicked(kDeleteItem);
    EXPECT_EQ(ProfileExists("site", file), answer == Answer::no);
  }
  EXPECT_EQ(prompts.messages[0],
            (Message{"Warning", "Are you sure you want to delete this site profile: site",
                     Message::Buttons::yesNo, Message::Icon::warning, 2}));
  EXPECT_THAT(editor.profileItems, IsEmpty());
  EXPECT_EQ(editor.currentName() + editor.shown.name + editor.shown.ID + editor.shown.Host, "");
}

TEST_F(SiteProfileEditorTest, ExitsWhenConfirmed) {
  int exits = 0;
  editor.onExit = [&] { ++exits; };
  for (const Answer answer : {Answer::no, Answer::yes}) {
    prompts.answer = answer;
    editor.ItemClicked(kExitItem);
    EXPECT_EQ(exits, answer == Answer::yes ? 1 : 0);
  }
  EXPECT_EQ(prompts.messages[0], (Message{"Quillmoor", "Are you sure you want to exit the application?.",
                                          Message::Buttons::yesNoCancel, Message::Icon::warning, 3}));
}

TEST_F(SiteProfileEditorTest, EditsItsFolderList) {
  for (const char* typed : {" /www ", "/www", "  ", "/a b "}) {
    editor.txtAddFolder = typed;
    editor.AddFolder();
  }
  EXPECT_EQ(editor.txtAddFolder, "/a b") << "the trimmed text goes back into the box";
  EXPECT_EQ(editor.AddFolders({"/WWW", "/www", "/WWW"}), 1U);
  editor.RemoveFolders({2, 0});
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/a b"));
  editor.ClearFolders();
  EXPECT_THAT(editor.shown.Folders, IsEmpty());
}

TEST_F(SiteProfileEditorTest, EnablesTheFieldsThatModeAndProxyNeed) {
  for (const int combination : {0, 1, 2, 3}) {
    editor.shown.PASV = combination & 1;
    editor.shown.ManualPort = combination > 1;
    EXPECT_EQ(editor.portRangeEnabled(), combination == 2);
  }
  const ProxyBoxes none, user{true, true, true, false}, login{true, true, true, true}, address{true, true};
  const ProxyBoxes needs[] = {none, user, login, login, login, address, address, address};
  for (std::int16_t type = 0; type < 8; ++type) {
    editor.shown.ProxyType = type;
    EXPECT_EQ(editor.proxyBoxesEnabled(), needs[type]) << type;
  }
}

TEST_F(SiteProfileEditorTest, ChangesAUsualPortWithTheEncryption) {
  const struct {
    std::int32_t before;
    const char* port;
    std::int32_t chosen;
    const char* becomes;
  } rows[] = {{0, "21", 2, "990"},    {2, "990", 0, "21"},  {1, " 21 ", 2, "990"}, {0, "21", 1, "21"},
              {0, "2121", 2, "2121"}, {0, "990", 2, "990"}, {0, "", 2, ""}};
  for (const auto& row : rows) {
    editor.shown.Security = row.before;
    editor.shown.Port = row.port;
    editor.ChooseSecurity(row.chosen);
    EXPECT_EQ(editor.shown.Port, row.becomes) << row.before << " " << row.port << " " << row.chosen;
  }
  fill("site");
  editor.shown.Port = "x";
  EXPECT_TRUE(editor.SaveSiteProfile());
  EXPECT_EQ(editor.shown.Port, "990");
}

TEST_F(SiteProfileEditorTest, SaysWhatItKnowsOfTheEncryption) {
  fill("site");
  EXPECT_EQ(editor.securityNote(), "");
  SiteProfile browsed = editor.shown;
  browsed.Host = "FTP.example.org";
  editor.NoteTlsOffered(browsed);
  EXPECT_THAT(editor.securityNote(), HasSubstr("offers encryption"));
  for (const std::int32_t proxy : {0, 1, 2, 3, 4, 5, 6, 7}) {
    editor.shown.ProxyType = proxy;
    editor.shown.Security = 0;
    const bool passes = proxy < 3 || proxy == 7;
    EXPECT_EQ(editor.securityNote().empty(), !passes) << proxy << ": advises what is refused";
    editor.ChooseSecurity(1);
    EXPECT_EQ(editor.securityNote().empty(), passes) << proxy;
    EXPECT_EQ(editor.Connect().has_value(), passes) << proxy;
    EXPECT_EQ(editor.focus, passes ? "" : "Security");
  }
  editor.Add();
  fill("another server");
  editor.shown.Port = "22";
  EXPECT_EQ(editor.securityNote(), "");
}

TEST_F(SiteProfileEditorTest, ConnectsWithWhatTheFormShows) {
  EXPECT_FALSE(editor.connectEnabled());
  editor.shown.Host = "  ";
  EXPECT_TRUE(editor.connectEnabled()) << "the box is not empty";
  EXPECT_FALSE(editor.Connect());
  EXPECT_THAT(prompts.takeMessages(), ElementsAre(error("Please enter the FTP host address or IP")));
  EXPECT_EQ(editor.focus, "Host");
  save("site");
  editor.shown.Host = editor.shown.ProxyHost = " h ";
  const SiteProfile site = editor.Connect().value();
  EXPECT_EQ(site.Host + site.ProxyHost + site.Password, "hhsecret");
}

TEST_F(SiteProfileEditorTest, TakesTheChosenFileAndFolder) {
  for (const std::string chosen : {"", "/chosen", "/other"}) {
    if (!chosen.empty()) prompts.choice = chosen;
    editor.BrowseRunProgram();
    editor.BrowseSaveTo();
    EXPECT_EQ(editor.shown.RunProgram + editor.shown.SaveTo,
              chosen.empty() ? ProgramFolder() : chosen + chosen);
  }
  EXPECT_EQ(prompts.choosers[4], "file Open: All Files (*.*)|*.* @ /chosen");
  EXPECT_EQ(prompts.choosers[5], "folder Select folder @ /chosen");
}

TEST_F(SiteProfileEditorTest, AsksAnewForAPasswordThatCannotBeRead) {
  save("site");
  ASSERT_TRUE(mIni::WriteValue("site", "Password", "?", file));
  const std::string damaged = contentsOf(file);
  editor.EditSiteProfile("site");
  EXPECT_THAT(editor.passwordNote(), HasSubstr("cannot be read"));
  EXPECT_FALSE(editor.SaveSiteProfile());
  EXPECT_EQ(contentsOf(file), damaged);
  editor.shown.Password = "typed";
  EXPECT_EQ(editor.passwordNote(), "");
  EXPECT_TRUE(editor.SaveSiteProfile());
  editor.shown.Password = "";
  EXPECT_EQ(editor.passwordNote(), "") << "the stored one can be read now";
}

TEST_F(SiteProfileEditorTest, ShowsUnknownValuesAsTheDefaultButEncryptionAsTls) {
  for (const std::string value : {"8", "-1", "8x", "65536", "99999999999"}) {
    testing::writeFile(file, "[site]\r\nStatus=2\r\nPASV=-1\r\nManualPort=1\r\nProxyType=" + value +
                                 "\r\nSecurity=" + value + "\r\n");
    editor.EditSiteProfile("site");
    EXPECT_EQ(editor.shown.ProxyType, 0) << value;
    EXPECT_EQ(editor.shown.Status * 100 + editor.shown.PASV * 10 + editor.shown.ManualPort, 1);
    EXPECT_EQ(editor.shown.Security, 1) << value;
    EXPECT_THAT(editor.securityNote(), HasSubstr("cannot be read")) << value;
    editor.ChooseSecurity(0);
    EXPECT_EQ(editor.securityNote(), "") << value;
  }
}

TEST_F(SiteProfileEditorTest, ReportsAFileThatCannotBeWrittenAndKeepsWhatWasTyped) {
  save("stored");
  std::filesystem::rename(folder / "program", folder / "elsewhere");
  prompts.answer = Answer::yes;
  editor.DeleteSiteProfile();
  EXPECT_EQ(editor.currentName(), "stored");
  editor.Add();
  fill("new");
  EXPECT_FALSE(editor.SaveSiteProfile());
  EXPECT_EQ(editor.shown.Host + editor.shown.ID + editor.currentName(), "ftp.example.org")
      << "no ID before the first save that succeeds";
  EXPECT_EQ(prompts.messages.at(1),
            error("The profile stored could not be deleted: " + file + " cannot be written."));
  EXPECT_EQ(prompts.messages.at(2), error("The profile could not be written to " + file +
                                          ". What you entered stays in the form and is not saved."));
}

}  // namespace
}  // namespace quillmoor
