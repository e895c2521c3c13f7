// The rules of the site profile form.
#include "profiles/SiteProfileEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/system/ProgramFolder.h"
#include "profiles/ProfileText.h"
#include "profiles/ScriptedPrompts.h"
#include "profiles/SiteProfileStore.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::ScriptedPrompts;
using testing::TemporaryFolder;
using testing::writeFile;
using Answer = UserPrompts::Answer;
using Buttons = Message::Buttons;
using Icon = Message::Icon;

Message error(const std::string& text) {
  return {"Error", text, Buttons::ok, Icon::critical, 1};
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
  std::vector<std::string> listed() {
    std::vector<std::string> captions;
    for (const TaskItem& item : editor.profileItems) captions.push_back(item.caption);
    return captions;
  }
  /// From now on the profile file can neither be read nor written.
  void takeFileAway() { std::filesystem::rename(folder / "program", folder / "elsewhere"); }

  TemporaryFolder folder;
  std::string file = (folder / "program" / "Profiles.ini").string();
  ScriptedPrompts prompts;
  LocalDateTime now = *MakeLocalDateTime({2011, 5, 7, 14, 3, 9, 0});
  SiteProfileEditor editor{file, prompts, [this] { return now; }};
};

TEST_F(SiteProfileEditorTest, AsksForWhatIsMissingInOrder) {
  // Each row mends what the row before was refused for.
  const struct {
    const char* message;
    const char* focus;
    void (*mend)(SiteProfile&);
  } rows[] = {
      {"Please enter a name for this profile", "name", [](SiteProfile& p) { p.name = "SITE"; }},
      {"Profile name already exists, please enter a different name", "name",
       [](SiteProfile& p) { p.name = " other "; }},
      {"Please enter the ftp host name or IP address", "Host", [](SiteProfile& p) { p.Host = "h"; }},
      {"Please enter the ftp account User ID", "UserID", [](SiteProfile& p) { p.UserID = "u"; }},
      {"Please enter the FTP account Password", "Password", [](SiteProfile& p) { p.Password = "p"; }},
      {"Please enter the FTP post, the default is 21", "Port", [](SiteProfile& p) { p.Port = "abc"; }},
      {"Please select a directory to save to.", "SaveTo", [](SiteProfile& p) { p.SaveTo = "/b"; }},
      {"Please select the folders to backup", "Folders", [](SiteProfile& p) { p.Folders = {"/"}; }},
  };
  save("site");
  const std::string before = contentsOf(file);
  editor.Add();
  for (const ProfileText& text : kProfileTexts) editor.shown.*text.field = "  ";
  editor.shown.name = "";
  for (const auto& row : rows) {
    editor.focus = "";
    EXPECT_FALSE(editor.SaveSiteProfile());
    EXPECT_THAT(prompts.takeMessages(), ElementsAre(error(row.message)));
    EXPECT_EQ(editor.focus, row.focus) << row.message;
    EXPECT_EQ(contentsOf(file), before) << row.message;
    row.mend(editor.shown);
  }
  EXPECT_TRUE(editor.SaveSiteProfile());
  EXPECT_THAT(prompts.messages, IsEmpty());
  EXPECT_EQ(editor.focus, "");
  const SiteProfile stored = LoadSiteProfile("other", file);
  EXPECT_EQ(stored.Port + " " + stored.Timeout, "21 60") << "corrected without a word";
  EXPECT_EQ(editor.shown.Port + editor.shown.name, "21other");
}

TEST_F(SiteProfileEditorTest, RefusesWhatTheFileCannotKeep) {
  const struct {
    const char* key;
    const char* text;
    const char* why;
  } rows[] = {{"SaveTo", "/日本", "SaveTo holds a character that the profile file cannot keep: /日本"},
              {"Password", "пароль", "Password holds a character that the profile file cannot keep."},
              {"Account", "a\nb", "Account cannot hold a line break or another control character."}};
  const auto refused = [this](std::string_view focus, const std::string& why) {
    EXPECT_FALSE(editor.SaveSiteProfile());
    EXPECT_THAT(prompts.takeMessages(), ElementsAre(error(why)));
    EXPECT_EQ(editor.focus, focus);
    EXPECT_FALSE(std::filesystem::exists(file));
  };
  for (const auto& row : rows) {
    fill("site");
    for (const ProfileText& text : kProfileTexts) {
      if (text.key == row.key) editor.shown.*text.field = row.text;
    }
    refused(row.key, row.why);
    editor.Add();
  }
  fill("日本");
  refused("name", "The name holds a character that the profile file cannot keep: 日本");
  fill("site");
  editor.shown.Folders = {"/a~|~/b"};
  refused("Folders", "\"/a~|~/b\" cannot be a folder.");
  editor.shown.Folders = {std::string(60'000, 'a'), std::string(60'000, 'b')};
  refused("Folders", "The list of folders is too long for the profile file, which keeps 99997 characters.");
  // The longest that is taken comes back whole.
  editor.shown.Folders = {std::string(60'000, 'a'), std::string(39'994, 'b')};
  EXPECT_TRUE(editor.SaveSiteProfile());
  EXPECT_EQ(LoadSiteProfile("site", file).Folders, editor.shown.Folders);
}

TEST_F(SiteProfileEditorTest, BeginsAnewAndLeavesWhatItLeaves) {
  save("site");
  for (const ProfileText& text : kProfileTexts) editor.shown.*text.field = "x";
  editor.shown.Status = editor.shown.PASV = 0;
  editor.shown.ManualPort = 1;
  editor.shown.ProxyType = 7;
  editor.shown.passwordUnreadable = true;
  editor.ItemClicked(30001);
  for (const ProfileText& text : kProfileTexts) {
    const std::string_view key = text.key;
    const bool left = key == "RunURL" || key == "RunProgram" || key == "DefaultDir";
    EXPECT_EQ(editor.shown.*text.field, left               ? "x"
                                        : key == "Port"    ? "21"
                                        : key == "Timeout" ? "60"
                                        : key == "SaveTo"  ? ProgramFolder()
                                                           : "")
        << key;
  }
  EXPECT_EQ(editor.shown.name + editor.shown.ID + editor.currentName() + editor.passwordNote(), "");
  EXPECT_FALSE(editor.editMode());
  EXPECT_EQ(editor.shown.Status * 100 + editor.shown.PASV * 10 + editor.shown.ManualPort, 110);
  EXPECT_EQ(editor.shown.ProxyType, 0);
  EXPECT_THAT(editor.shown.Folders, IsEmpty());
  editor.EditSiteProfile("site");
  EXPECT_EQ(editor.shown.RunURL + editor.shown.RunProgram + editor.shown.DefaultDir, "")
      << "a load overwrites them";
}

TEST_F(SiteProfileEditorTest, OpensListsAndSaves) {
  save("b");
  save("A");
  EXPECT_THAT(listed(), IsEmpty()) << "the item refreshes the list, not the save";
  fill("c");
  editor.ItemClicked(30003);
  EXPECT_THAT(listed(), ElementsAre("A", "b", "c"));
  editor.shown.name = "";
  DeleteSiteProfile("c", file);
  editor.ItemClicked(30003);
  EXPECT_THAT(listed(), ElementsAre("A", "b")) << "also when nothing was saved";

  editor.ItemClicked(editor.profileItems[1].id);
  EXPECT_EQ(editor.currentName() + " " + editor.shown.name + " " + editor.shown.Host, "b b ftp.example.org");
  EXPECT_TRUE(editor.editMode());
  prompts.messages.clear();
  editor.ItemClicked(4711);
  EXPECT_EQ(editor.currentName(), "b") << "no item";
  EXPECT_THAT(prompts.messages, IsEmpty());
}

TEST_F(SiteProfileEditorTest, KeepsIdentityAndTheSectionOfTheOldName) {
  save("site");
  EXPECT_EQ(editor.shown.ID, "20110507140309");
  now += std::chrono::hours(1);
  EXPECT_TRUE(editor.SaveSiteProfile()) << "saved once more it is no new profile";
  editor.EditSiteProfile("site");
  editor.shown.name = "renamed";
  EXPECT_TRUE(editor.SaveSiteProfile());
  EXPECT_THAT(LoadSitesInfo(file), ElementsAre("renamed", "site"));
  EXPECT_EQ(LoadSiteProfile("renamed", file).ID, "20110507140309");
  EXPECT_EQ(editor.currentName(), "renamed");
  EXPECT_THAT(prompts.messages, IsEmpty());
}

TEST_F(SiteProfileEditorTest, DoesNotWriteAProfileBegunAsNewOverAnother) {
  save("other");
  const SiteProfile other = LoadSiteProfile("other", file);
  save("site");
  for (const char* name : {"SITE ", "renamed"}) {
    editor.shown.name = name;
    EXPECT_TRUE(editor.SaveSiteProfile()) << name;
  }
  EXPECT_THAT(prompts.messages, IsEmpty());
  editor.shown.name = "Other";
  editor.shown.Host = "elsewhere";
  EXPECT_FALSE(editor.SaveSiteProfile());
  EXPECT_THAT(prompts.takeMessages(),
              ElementsAre(error("Profile name already exists, please enter a different name")));
  EXPECT_EQ(editor.focus, "name");
  EXPECT_EQ(LoadSiteProfile("other", file).Host, other.Host);
}

TEST_F(SiteProfileEditorTest, SavesThePortRangeAlsoWhileItsBoxesAreDisabled) {
  fill("site");
  editor.shown.MinData = "5000";
  editor.shown.MaxData = "4000";
  for (const bool manual : {true, false}) {
    for (const bool passive : {false, true}) {
      editor.shown.ManualPort = manual;
      editor.shown.PASV = passive;
      EXPECT_EQ(editor.portRangeEnabled(), manual && !passive);
      ASSERT_TRUE(editor.SaveSiteProfile());
      EXPECT_EQ(LoadSiteProfile("site", file).MaxData, "5000") << "as it was corrected by the first save";
    }
  }
}

TEST_F(SiteProfileEditorTest, DeletesOnlyWhatIsOpenAndConfirmed) {
  editor.ItemClicked(30002);
  EXPECT_THAT(prompts.messages, IsEmpty()) << "nothing is open";
  save("other");
  save("site");
  editor.EditSiteProfile("site");
  prompts.answer = Answer::no;
  editor.ItemClicked(30002);
  EXPECT_THAT(prompts.takeMessages(),
              ElementsAre(Message{"Warning", "Are you sure you want to delete this site profile: site",
                                  Buttons::yesNo, Icon::warning, 2}));
  EXPECT_TRUE(ProfileExists("site", file));
  prompts.answer = Answer::yes;
  editor.ItemClicked(30002);
  EXPECT_THAT(listed(), ElementsAre("other"));
  EXPECT_EQ(editor.currentName() + editor.shown.name + editor.shown.ID + editor.shown.Host, "");
  EXPECT_FALSE(editor.editMode());
}

TEST_F(SiteProfileEditorTest, LeavesOnlyWhenConfirmed) {
  int exits = 0;
  editor.onExit = [&] { ++exits; };
  for (const Answer answer : {Answer::no, Answer::cancel, Answer::yes}) {
    prompts.answer = answer;
    editor.ItemClicked(30005);
    EXPECT_THAT(prompts.takeMessages(),
                ElementsAre(Message{"Quillmoor", "Are you sure you want to exit the application?.",
                                    Buttons::yesNoCancel, Icon::warning, 3}));
    EXPECT_EQ(exits, answer == Answer::yes ? 1 : 0);
  }
}

TEST_F(SiteProfileEditorTest, KeepsItsFolderList) {
  for (const char* typed : {" /www ", "/www", "", "  ", "/WWW", "/a b "}) {
    editor.txtAddFolder = typed;
    editor.AddFolder();
  }
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/www", "/WWW", "/a b"));
  EXPECT_EQ(editor.txtAddFolder, "/a b") << "the trimmed text goes back into the box";
  editor.AddFolders({"/c", "/www", "/c"});
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/www", "/WWW", "/a b", "/c"));
  editor.RemoveFolders({3, 0});
  editor.RemoveFolders({});
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/WWW", "/a b"));
  editor.ClearFolders();
  EXPECT_THAT(editor.shown.Folders, IsEmpty());
}

TEST_F(SiteProfileEditorTest, EnablesWhatEachProxyNeeds) {
  const char* const needs[] = {"", "hpu", "hpuw", "hpuw", "hpuw", "hp", "hp", "hp"};
  for (std::size_t type = 0; type < kProxyTypes.size(); ++type) {
    editor.shown.ProxyType = static_cast<std::int16_t>(type);
    const ProxyBoxes boxes = editor.proxyBoxesEnabled();
    const std::string enabled = std::string(boxes.host ? "h" : "") + (boxes.port ? "p" : "") +
                                (boxes.username ? "u" : "") + (boxes.password ? "w" : "");
    EXPECT_EQ(enabled, needs[type]) << kProxyTypes[type];
  }
}

TEST_F(SiteProfileEditorTest, ConnectsWithWhatTheFormShows) {
  EXPECT_FALSE(editor.connectEnabled());
  editor.shown.Host = "  ";
  EXPECT_TRUE(editor.connectEnabled()) << "the box is not empty";
  EXPECT_FALSE(editor.Connect());
  EXPECT_THAT(prompts.takeMessages(), ElementsAre(error("Please enter the FTP host address or IP")));
  for (const ProfileText& text : kProfileTexts) editor.shown.*text.field = std::string(text.key);
  for (std::string SiteProfile::*text :
       {&SiteProfile::Host, &SiteProfile::Port, &SiteProfile::ProxyHost, &SiteProfile::ProxyPort})
    editor.shown.*text = " " + editor.shown.*text + " ";  // blanks around it are no part of a host
  editor.shown.PASV = 0;
  editor.shown.ProxyType = 2;
  const BrowsedSite site = editor.Connect().value();
  EXPECT_EQ(site.host + " " + site.userId + " " + site.password + " " + site.port + " " + site.timeout,
            "Host UserID Password Port Timeout");
  EXPECT_EQ(site.account + " " + site.defaultDir, "Account DefaultDir");
  EXPECT_EQ(site.proxyHost + " " + site.proxyPort + " " + site.proxyUsername + " " + site.proxyPassword,
            "ProxyHost ProxyPort ProxyUsername ProxyPassword");
  EXPECT_EQ(site.proxyType, 2);
  EXPECT_FALSE(site.passive);
  EXPECT_THAT(prompts.messages, IsEmpty());
}

TEST_F(SiteProfileEditorTest, TakesTheChosenFileAndFolder) {
  editor.BrowseRunProgram();
  editor.BrowseSaveTo();
  EXPECT_EQ(editor.shown.RunProgram + editor.shown.SaveTo, ProgramFolder()) << "nothing was chosen";
  prompts.choice = "/chosen";
  editor.BrowseRunProgram();
  editor.BrowseSaveTo();
  EXPECT_EQ(editor.shown.RunProgram + editor.shown.SaveTo, "/chosen/chosen");
  editor.BrowseRunProgram();
  EXPECT_THAT(prompts.choosers,
              ElementsAre("file Open: All Files (*.*)|*.* @ ", "folder Select folder @ " + ProgramFolder(),
                          "file Open: All Files (*.*)|*.* @ ", "folder Select folder @ " + ProgramFolder(),
                          "file Open: All Files (*.*)|*.* @ /chosen"));
}

TEST_F(SiteProfileEditorTest, DoesNotSaveAPasswordThatCouldNotBeRead) {
  save("site");
  std::string damaged = contentsOf(file);
  damaged.replace(damaged.find("Password=") + 9, 1, "?");
  writeFile(file, damaged);
  editor.EditSiteProfile("site");
  EXPECT_EQ(editor.shown.Password, "");
  EXPECT_THAT(editor.passwordNote(), HasSubstr("cannot be read"));
  EXPECT_FALSE(editor.SaveSiteProfile());
  EXPECT_EQ(editor.focus, "Password");
  EXPECT_EQ(contentsOf(file), damaged);
  editor.shown.Password = "typed";
  EXPECT_EQ(editor.passwordNote(), "");
  EXPECT_TRUE(editor.SaveSiteProfile());
  EXPECT_EQ(LoadSiteProfile("site", file).Password, "typed");
  editor.shown.Password = "";
  EXPECT_EQ(editor.passwordNote(), "") << "the stored one can be read now";
}

TEST_F(SiteProfileEditorTest, ShowsWhatIsInNoListAsTheDefault) {
  for (const char* type : {"8", "-1", "30000", "x"}) {
    writeFile(file,
              std::string("[site]\r\nStatus=2\r\nPASV=-1\r\nManualPort=1\r\nProxyType=") + type + "\r\n");
    editor.EditSiteProfile("site");
    EXPECT_EQ(editor.shown.ProxyType, 0) << type;
    EXPECT_EQ(editor.shown.Status * 100 + editor.shown.PASV * 10 + editor.shown.ManualPort, 1);
    EXPECT_EQ(editor.proxyBoxesEnabled(), ProxyBoxes{});
  }
}

TEST_F(SiteProfileEditorTest, TellsOfAFileThatCannotBeWrittenAndKeepsWhatWasTyped) {
  save("stored");
  editor.LoadSitesInfo();
  takeFileAway();
  prompts.answer = Answer::yes;
  editor.DeleteSiteProfile();
  ASSERT_EQ(prompts.messages.size(), 2U);
  EXPECT_EQ(prompts.messages[1],
            error("The profile stored could not be deleted: " + file + " cannot be written."));
  EXPECT_EQ(editor.currentName() + editor.shown.Host, "storedftp.example.org");
  EXPECT_THAT(listed(), ElementsAre("stored"));
  prompts.messages.clear();

  editor.Add();
  fill("new");
  EXPECT_FALSE(editor.SaveSiteProfile());
  EXPECT_THAT(prompts.takeMessages(),
              ElementsAre(error("The profile could not be written to " + file +
                                ". What you entered stays in the form and is not saved.")));
  EXPECT_EQ(editor.shown.Host + editor.shown.ID + editor.currentName(), "ftp.example.org")
      << "the day of the first save is still to come";
  EXPECT_FALSE(editor.editMode());
  std::filesystem::rename(folder / "elsewhere", folder / "program");
  now += std::chrono::hours(1);
  EXPECT_TRUE(editor.SaveSiteProfile());
  EXPECT_EQ(editor.shown.ID, "20110507150309");
}

}  // namespace
}  // namespace quillmoor
