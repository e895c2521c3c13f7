// The site profile form: its fields are wired to the editor, its task panel to the profile file.
#include "FormFixture.h"
#include "SiteFormFixture.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::writeFile;
using Texts = std::vector<std::string>;

class SiteFieldsTest : public FormTest {
 protected:
  void open() {
    fields = new SiteFields(frame, editor, settings);
    present(fields);
  }
  Texts folders() { return rowsOf(*fields->lvwFolders); }

  testing::TemporaryFolder folder;
  SiteProfileEditor editor{(folder / "Profiles.ini").string(), prompts};
  SiteFields* fields = nullptr;
};

TEST_F(SiteFieldsTest, TakeWhatIsEnteredWhereItCountsAndShowItAgain) {
  editor.shown.passwordUnreadable = true;
  editor.shown.Status = editor.shown.PASV = 1;
  open();
  EXPECT_TRUE(fields->noteOf("Password")->IsShown() && !fields->noteOf("Port")->IsShown());
  EXPECT_TRUE(fields->chkStatus->GetValue() && fields->chkPASV->GetValue());
  for (const char* key : {"ProxyHost", "ProxyPort", "ProxyUsername", "ProxyPassword", "MinData", "MaxData"})
    EXPECT_FALSE(fields->box(key)->IsEnabled() || fields->captionOf(key)->IsEnabled()) << key;
  use(fields->cboProxyType, kProxyTypes[1]);
  EXPECT_TRUE(fields->captionOf("ProxyUsername")->IsEnabled() && !fields->box("ProxyPassword")->IsEnabled());
  use(fields->chkPASV, "0");
  use(fields->chkManualPort, "1");
  use(fields->cboProxyType, kProxyTypes[2]);
  use(fields->chkStatus, "0");
  for (const ProfileField& field : kProfileFields) {
    if (field.text()) use(fields->box(field.key), std::string(field.key));
  }
  EXPECT_TRUE(!fields->noteOf("Password")->IsShown() && fields->noteOf("Port")->IsShown());
  use(fields->box("name"), "my site");
  use(fields->txtAddFolder, "/www");
  use(fields->cmdAddFolder);
  for (const ProfileField& field : kProfileFields) {
    if (!field.text()) continue;
    EXPECT_EQ(editor.shown.*field.text(), field.key);
    EXPECT_NE(fields->box(field.key)->GetToolTipText(), "") << field.key;
  }
  const SiteProfile& entered = editor.shown;
  EXPECT_EQ(entered.name, "my site");
  EXPECT_EQ(entered.Status * 1000 + entered.PASV * 100 + entered.ManualPort * 10 + entered.ProxyType, 12);
  use(fields->txtAddFolder, "");
  auto before = shown();
  open();
  EXPECT_EQ(shown(), before);
  EXPECT_EQ(folders(), Texts{"/www"});
  prompts.choice = "/chosen";
  for (wxButton* const browse : {fields->cmdBrowseSaveTo, fields->cmdBrowseRunProgram}) use(browse);
  before["txtSaveTo"] = before["txtRunProgram"] = "/chosen";
  EXPECT_EQ(shown(), before);
  EXPECT_TRUE(fields->box("Password")->HasFlag(wxTE_PASSWORD));
}

TEST_F(SiteFieldsTest, ShowTheEncryptionWithItsPortAndCertificate) {
  editor.shown.Certificate = "ab12";
  open();
  EXPECT_TRUE(fields->box("Certificate")->IsShown() && !fields->box("Certificate")->IsEditable());
  use(fields->cboSecurity, kSecurityTypes[2]);
  EXPECT_EQ(editor.shown.Security, 2);
  EXPECT_EQ(fields->box("Port")->GetValue(), "990");
  EXPECT_FALSE(fields->lblSecurityNote->IsShown());
  use(fields->cboProxyType, kProxyTypes[4]);
  EXPECT_TRUE(fields->lblSecurityNote->IsShown());
  fields->putFocusOn("Security");
  EXPECT_TRUE(waitUntil([&] { return hasFocus(fields->cboSecurity); }));
  use(fields->cmdForgetCertificate);
  for (wxWindow* const part : std::initializer_list<wxWindow*>{
           fields->captionOf("Certificate"), fields->box("Certificate"), fields->cmdForgetCertificate})
    EXPECT_FALSE(part->IsShown());
  EXPECT_EQ(editor.shown.Certificate, "");
}

TEST_F(SiteFieldsTest, KeepTheFolderList) {
  open();
  for (const char* typed : {"/a", " /www ", "/c"}) {
    use(fields->txtAddFolder, typed);
    command(fields->txtAddFolder, wxEVT_TEXT_ENTER);
  }
  EXPECT_EQ(folders(), (Texts{"/a", "/www", "/c"}));
  fields->lvwFolders->selectRow(0);
  fields->lvwFolders->selectRow(2);
  use(fields->cmdRemoveFolders);
  EXPECT_EQ(folders(), Texts{"/www"});
  fields->lvwFolders->selectRow(0);
  focus(fields->lvwFolders);
  hand.Char(WXK_DELETE);
  EXPECT_TRUE(waitUntil([&] { return folders().empty(); }));
  use(fields->cmdAddFolder);
  EXPECT_EQ(folders(), Texts{"/c"});
  use(fields->cmdClearFolders);
  EXPECT_EQ(folders(), Texts{});
}

TEST_F(SiteFieldsTest, SelectTheWholeTextWithEveryFocus) {
  open();
  for (const char* key : {"Host", "UserID"}) {
    fields->box(key)->ChangeValue("some text");
    focus(fields->box(key));
    EXPECT_TRUE(waitUntil([&] { return fields->box(key)->GetStringSelection() == "some text"; })) << key;
  }
  hand.MouseMove(fields->box("Host")->GetScreenPosition() + wxPoint(15, 10));
  hand.MouseClick();
  EXPECT_TRUE(waitUntil([&] { return fields->box("Host")->GetStringSelection() == "some text"; }))
      << "a click sets only the caret";
}

TEST_F(SiteFieldsTest, AreReachedByTheTabKeyAndHaveRoom) {
  open();
  use(fields->box("Host"), "h");
  use(fields->chkPASV, "0");
  use(fields->chkManualPort, "1");
  use(fields->cboProxyType, kProxyTypes[2]);
  use(fields->box("Certificate"), "ab12");
  expectTabOrder(fields->box("name"));
  expectRoom(form->FromDIP(wxSize(520, 240)));
  expectRoom(wxSize(300, 200));
}

TEST_F(SiteFormTest, TakesAProfileFromNothingToItsEnd) {
  open();
  choose(kAddItem);
  focus(fields->box("name"));
  hand.Text("my site");
  ASSERT_TRUE(isOpen("my site"));
  for (const char* key : {"Host", "UserID", "Password"}) fields->box(key)->SetValue("x");
  focus(fields->txtAddFolder);
  hand.Text("/www");
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(waitUntil([&] { return folders() == Texts{"/www"}; }));
  click(form->wndTaskPanel->command(kSaveItem));
  ASSERT_TRUE(waitUntil([&] { return listed() == Texts({"my site", "site"}); }));
  EXPECT_EQ(LoadSiteProfile("my site", profilesFile()).Host, "x");

  clickProfile("site");
  ASSERT_TRUE(isOpen("site"));
  fields->box("name")->SetValue("renamed");
  fields->box("Timeout")->SetValue("0");
  choose(kSaveItem);
  ASSERT_EQ(listed().size(), 3u);
  EXPECT_EQ(fields->box("Timeout")->GetValue(), "60") << "the correction is not shown";
  EXPECT_TRUE(form->wndTaskPanel->list().isBold(1, 0)) << "the open profile is not marked";

  const wxString question = "Are you sure you want to delete this site profile: renamed";
  constexpr long style = wxYES_NO | wxNO_DEFAULT | wxICON_WARNING;
  wxTEST_DIALOG(choose(kDeleteItem), ExpectBox("Warning", question, style, wxID_YES));
  EXPECT_EQ(listed(), Texts({"my site", "site"}));
  EXPECT_EQ(fields->box("name")->GetValue() + fields->box("Host")->GetValue(), "");
}

TEST_F(SiteFormTest, LeadsToWhatIsMissingAndBringsItIntoView) {
  open();
  main->SetSize(main->FromDIP(wxSize(500, 340)));
  choose(kAddItem);
  for (const char* key : {"name", "Host", "UserID", "Password"}) fields->box(key)->SetValue("x");
  fields->box("SaveTo")->SetValue("");
  const auto refuses = [&](const char* message, wxWindow* wanted) {
    focus(fields->box("RunURL"));
    wxTEST_DIALOG(choose(kSaveItem), ExpectBox("Error", message, wxOK | wxICON_ERROR, wxID_OK));
    EXPECT_TRUE(waitUntil([&] { return hasFocus(wanted); })) << message;
    EXPECT_TRUE(waitUntil([&] {
      const wxRect view = fields->GetScreenRect(), place = wanted->GetScreenRect();
      return place.y >= view.y && place.GetBottom() <= view.GetBottom();
    })) << message;
  };
  refuses("Please select a directory to save to.", fields->box("SaveTo"));
  fields->box("SaveTo")->SetValue("/b");
  refuses("Please select the folders to backup", fields->lvwFolders);
}

TEST_F(SiteFormTest, LeadsTheTabKeyFromItsCommandsToTheProfilesAndTheFields) {
  open();
  std::vector<wxWindow*> order;
  for (const CommandItem& item : kCommandItems) order.push_back(form->wndTaskPanel->command(item.id));
  order.insert(order.end(), {&form->wndTaskPanel->list(), fields->box("name")});
  expectTabOrder(order);
}

TEST_F(SiteFormTest, LeavesItsFieldsAloneWhenAChooserIsCancelled) {
  open();
  for (const auto& [key, button] :
       {std::pair{"RunProgram", fields->cmdBrowseRunProgram}, std::pair{"SaveTo", fields->cmdBrowseSaveTo}}) {
    fields->box(key)->SetValue("/before");
    wxTEST_DIALOG(clickEvent(button), wxExpectAny(wxID_CANCEL));
    EXPECT_EQ(fields->box(key)->GetValue(), "/before");
  }
}

TEST_F(SiteFormTest, StaysWholeAndQuickInASmallWindowWithALotInIt) {
  std::string others;
  for (int i = 0; i < 200; ++i)
    others += "[profile " + std::to_string(i) + std::string(60, 'x') + "]\r\nHost=h\r\n";
  writeFile(profilesFile(), contentsOf(profilesFile()) + others);
  profile.ID.clear();
  for (int i = 1; i < 2000; ++i) profile.Folders.push_back("/folder/" + std::to_string(i));
  profile.name = "zz";
  ASSERT_TRUE(SaveSiteProfile(profile, profilesFile()));
  WriteSetting("MainWidth", "5400");
  WriteSetting("MainHeight", "4500");
  open();
  const auto begin = std::chrono::steady_clock::now();
  clickProfile("zz");
  EXPECT_TRUE(waitUntil([&] { return folders().size() == 2000; }));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10)) << "a tenth is usual";
  for (const CommandItem& item : kCommandItems) {
    const wxRect button = form->wndTaskPanel->command(item.id)->GetScreenRect();
    EXPECT_TRUE(form->GetScreenRect().Contains(button)) << item.caption.data();
  }
}

}  // namespace
}  // namespace quillmoor
