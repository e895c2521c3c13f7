// The site profile form under the user's hands: every control reaches its rule, and says what it should.
#include <wx/dirdlg.h>
#include <wx/filedlg.h>

#include <algorithm>

#include "SiteFormFixture.h"
#include "profiles/ProfileText.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::writeFile;

/// Answers the chooser of files; "" thinks better of it.
class ChooseFile : public wxExpectModalBase<wxFileDialog> {
 public:
  explicit ChooseFile(const wxString& path) : path_(path) {}
  wxModalExpectation* Clone() const { return new ChooseFile(*this); }

 protected:
  int OnInvoked(wxFileDialog* chooser) const override {
    EXPECT_EQ(chooser->GetMessage(), "Open");
    EXPECT_EQ(chooser->GetWildcard().BeforeFirst('|'), "All Files (*.*)");
    if (path_.empty()) return wxID_CANCEL;
    chooser->SetPath(path_);
    EXPECT_TRUE(waitUntil([&] { return chooser->GetPath() == path_; })) << chooser->GetPath();
    return wxID_OK;
  }

 private:
  wxString path_;
};

TEST_F(SiteFormTest, TakesAProfileFromNothingToItsEnd) {
  const struct {
    const char *key, *typed;
  } texts[] = {{"name", "my site"},        {"Host", "ftp.example.org"}, {"Port", "2121"},
               {"UserID", "joe"},          {"Password", "s3cret"},      {"SaveTo", "/backup"},
               {"Account", "acct"},        {"DefaultDir", "/pub"},      {"Timeout", "90"},
               {"MinData", "5000"},        {"MaxData", "5010"},         {"ProxyHost", "proxy"},
               {"ProxyPort", "1080"},      {"ProxyUsername", "pu"},     {"ProxyPassword", "pw"},
               {"RunProgram", "/bin/run"}, {"RunURL", "http.example"}};
  static_assert(std::size(texts) == kProfileTexts.size() + 1);
  open();
  click(form->wndTaskPanel->command(kAddItem));
  ASSERT_TRUE(isOpen(""));
  focus(fields->chkPASV);  // brings it into view
  click(fields->chkPASV);
  ASSERT_TRUE(waitUntil([&] { return !fields->chkPASV->GetValue(); }));
  focus(fields->chkManualPort);
  hand.Char(WXK_SPACE);
  ASSERT_TRUE(waitUntil([&] { return fields->box("MinData")->IsEnabled(); }));
  chooseProxy(2);
  for (const auto& text : texts) type(fields->box(text.key), text.typed);
  type(fields->txtAddFolder, "/www");
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(waitUntil([&] { return folders() == std::vector<std::string>{"/www"}; }));
  focus(fields->chkStatus);
  click(fields->chkStatus);
  click(form->wndTaskPanel->command(kSaveItem));
  ASSERT_TRUE(waitUntil([&] { return listed() == (std::vector<std::string>{"my site", "site"}); }));

  SiteProfile stored = LoadSiteProfile("my site", profilesFile());
  EXPECT_EQ(stored.name, "my site");
  for (const ProfileText& text : kProfileTexts) {
    const auto* typed = std::find_if(std::begin(texts), std::end(texts),
                                     [&](const auto& one) { return one.key == text.key; });
    EXPECT_EQ(stored.*text.field, typed->typed) << text.key;
  }
  EXPECT_EQ(stored.Status * 1000 + stored.PASV * 100 + stored.ManualPort * 10 + stored.ProxyType, 12);
  EXPECT_EQ(stored.Folders, std::vector<std::string>{"/www"});

  clickProfile("site");
  ASSERT_TRUE(isOpen("site"));
  EXPECT_EQ(fields->box("Password")->GetValue(), "hunter22");
  type(fields->box("name"), "renamed");
  type(fields->box("Timeout"), "0");
  click(form->wndTaskPanel->command(kSaveItem));
  ASSERT_TRUE(waitUntil([&] { return listed().size() == 3; }));
  EXPECT_EQ(fields->box("Timeout")->GetValue(), "60") << "the correction is not seen";
  EXPECT_EQ(LoadSiteProfile("renamed", profilesFile()).Timeout, "60");
  EXPECT_TRUE(form->wndTaskPanel->list().isBold(1, 0)) << "which profile is open is not seen";

  const wxString question = "Are you sure you want to delete this site profile: renamed";
  constexpr long style = wxYES_NO | wxNO_DEFAULT | wxICON_WARNING;
  wxTEST_DIALOG(choose(kDeleteItem), ExpectBox("Warning", question, style, wxID_NO));
  EXPECT_EQ(listed().size(), 3u);
  wxTEST_DIALOG(choose(kDeleteItem), ExpectBox("Warning", question, style, wxID_YES));
  EXPECT_EQ(listed(), (std::vector<std::string>{"my site", "site"}));
  EXPECT_EQ(fields->box("name")->GetValue() + fields->box("Host")->GetValue(), "");
  choose(kDeleteItem);  // of nothing: no box appears
}

TEST_F(SiteFormTest, LeadsToWhatIsMissingAndBringsItIntoView) {
  open();
  main->SetSize(main->FromDIP(wxSize(500, 340)));
  choose(kAddItem);
  const struct {
    const char *message, *key, *mend;
  } rows[] = {{"Please enter a name for this profile", "name", "other"},
              {"Please select a directory to save to.", "SaveTo", "/b"},
              {"Please select the folders to backup", "Folders", ""}};
  for (const char* key : {"Host", "UserID", "Password"}) fields->box(key)->SetValue("x");
  fields->box("SaveTo")->SetValue("");
  for (const auto& row : rows) {
    fields->Scroll(0, fields->GetScrollLines(wxVERTICAL));
    focus(fields->box("RunURL"));
    wxTEST_DIALOG(choose(kSaveItem), ExpectBox("Error", row.message, wxOK | wxICON_ERROR, wxID_OK));
    const bool list = row.key == std::string("Folders");
    wxWindow* const wanted = list ? static_cast<wxWindow*>(fields->lvwFolders) : fields->box(row.key);
    EXPECT_TRUE(waitUntil([&] { return hasFocus(wanted); })) << row.message;
    EXPECT_TRUE(waitUntil([&] { return inView(wanted); })) << row.message;
    if (!list) type(fields->box(row.key), row.mend);
  }
  EXPECT_FALSE(ProfileExists("other", profilesFile()));
}

TEST_F(SiteFormTest, LetsTheTabKeyReachEveryControlInReadingOrder) {
  open();
  choose(kAddItem);
  fields->box("Host")->SetValue("h");
  tick(fields->chkPASV, false);
  tick(fields->chkManualPort, true);
  chooseProxy(2);
  std::vector<wxWindow*> order;
  for (const CommandItem& item : kCommandItems) order.push_back(form->wndTaskPanel->command(item.id));
  order.push_back(&form->wndTaskPanel->list());
  for (const char* key : {"name", "Host", "Port", "UserID", "Password"}) order.push_back(fields->box(key));
  order.insert(order.end(), {fields->chkStatus, fields->box("SaveTo"), fields->cmdBrowseSaveTo,
                             fields->lvwFolders, fields->cmdConnect, fields->txtAddFolder,
                             fields->cmdAddFolder, fields->cmdRemoveFolders, fields->cmdClearFolders});
  for (const char* key : {"Account", "DefaultDir", "Timeout"}) order.push_back(fields->box(key));
  order.insert(order.end(), {fields->chkPASV, fields->chkManualPort, fields->box("MinData"),
                             fields->box("MaxData"), fields->cboProxyType});
  for (const char* key : {"ProxyHost", "ProxyPort", "ProxyUsername", "ProxyPassword", "RunProgram"})
    order.push_back(fields->box(key));
  order.insert(order.end(), {fields->cmdBrowseRunProgram, fields->box("RunURL")});
  focus(order.front());
  for (std::size_t i = 1; i < order.size(); ++i) {
    hand.Char(WXK_TAB);
    ASSERT_TRUE(waitUntil([&] { return hasFocus(order[i]); }))
        << described(order[i]) << " is not behind " << described(order[i - 1]) << " but "
        << described(wxWindow::FindFocus());
    if (order[i]->GetParent() != form->wndTaskPanel) {
      EXPECT_TRUE(waitUntil([&] { return inView(order[i]); })) << described(order[i]) << " is out of view";
    }
  }
}

TEST_F(SiteFormTest, EnablesTheBoxesThatCount) {
  open();
  for (std::size_t type = 0; type < kProxyTypes.size(); ++type)
    EXPECT_EQ(fields->cboProxyType->GetString(static_cast<unsigned>(type)), kProxyTypes[type]);
  const struct {
    int proxy;
    bool manual;
    std::string enabled;
  } cases[] = {{1, true, "ProxyHost ProxyPort ProxyUsername MinData MaxData "},
               {2, false, "ProxyHost ProxyPort ProxyUsername ProxyPassword "},
               {0, false, ""}};
  tick(fields->chkPASV, false);
  for (const auto& c : cases) {
    chooseProxy(c.proxy);
    tick(fields->chkManualPort, c.manual);
    std::string enabled;
    for (const char* key :
         {"ProxyHost", "ProxyPort", "ProxyUsername", "ProxyPassword", "MinData", "MaxData"}) {
      EXPECT_EQ(fields->box(key)->IsEnabled(), fields->captionOf(key)->IsEnabled()) << key;
      if (fields->box(key)->IsEnabled()) enabled += key + std::string(" ");
    }
    EXPECT_EQ(enabled, c.enabled);
  }
}

TEST_F(SiteFormTest, KeepsTheFolderList) {
  openSite();
  EXPECT_EQ(folders(), std::vector<std::string>{"/"});
  type(fields->txtAddFolder, " /www ");
  click(fields->cmdAddFolder);
  ASSERT_TRUE(waitUntil([&] { return folders().size() == 2; }));
  EXPECT_EQ(fields->txtAddFolder->GetValue(), "/www") << "blanks stayed";
  type(fields->txtAddFolder, "/c");
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(waitUntil([&] { return folders().size() == 3; }));
  fields->lvwFolders->selectRow(0);
  fields->lvwFolders->selectRow(2);
  clickEvent(fields->cmdRemoveFolders);
  EXPECT_EQ(folders(), std::vector<std::string>{"/www"});
  fields->lvwFolders->selectRow(0);
  focus(fields->lvwFolders);
  hand.Char(WXK_DELETE);
  EXPECT_TRUE(waitUntil([&] { return folders().empty(); }));
  fields->txtAddFolder->SetValue("/d");
  clickEvent(fields->cmdAddFolder);
  clickEvent(fields->cmdClearFolders);
  EXPECT_TRUE(folders().empty());
  wxDataViewModel* const shown = fields->lvwFolders->GetModel();
  wxDataViewItemArray lines;
  const auto* const list = static_cast<const wxDataViewVirtualListModel*>(shown);
  ASSERT_EQ(list->GetCount(), kNoFolders.size());
  for (unsigned row = 0; row < list->GetCount(); ++row) {
    wxVariant value;
    list->GetValueByRow(value, row, 0);
    wxDataViewIconText text;
    text << value;
    EXPECT_EQ(text.GetText(), std::string(kNoFolders[row]));
  }
}

TEST_F(SiteFormTest, TakesWhatTheChoosersGive) {
  open();
  const std::string program = (folder / "a program").string();
  writeFile(program, "");
  for (const wxString& chosen : {wxString::FromUTF8(program), wxString()}) {
    wxTEST_DIALOG(clickEvent(fields->cmdBrowseRunProgram), ChooseFile(chosen));
    EXPECT_EQ(fields->box("RunProgram")->GetValue(), wxString::FromUTF8(program)) << chosen;
  }
  // What a chooser of folders gives is set by itself alone.
  const wxString before = fields->box("SaveTo")->GetValue();
  wxTEST_DIALOG(clickEvent(fields->cmdBrowseSaveTo), wxExpectAny(wxID_CANCEL));
  EXPECT_EQ(fields->box("SaveTo")->GetValue(), before);
}

TEST_F(SiteFormTest, SelectsTheWholeTextWithEveryFocus) {
  openSite();
  for (const ProfileText& text : kProfileTexts) {
    wxTextCtrl* const box = fields->box(text.key);
    if (!box->IsEnabled()) continue;
    box->ChangeValue("some text");
    focus(box);
    EXPECT_TRUE(waitUntil([&] { return box->GetStringSelection() == "some text"; })) << text.key;
  }
  fields->Scroll(0, 0);
  click(fields->box("Host"));
  EXPECT_TRUE(waitUntil([&] { return fields->box("Host")->GetStringSelection() == "some text"; }))
      << "a click leaves a caret only";
}

TEST_F(SiteFormTest, SaysWhatAFieldWantsAndWhyAPasswordIsMissing) {
  std::string damaged = contentsOf(profilesFile());
  damaged.replace(damaged.find("Password=") + 9, 1, "?");
  writeFile(profilesFile(), damaged);
  openSite();
  for (const auto& [key, mended] : {std::pair{"Port", "2121"}, std::pair{"Password", "typed"}}) {
    if (key == std::string("Port")) type(fields->box(key), "ftp");
    EXPECT_TRUE(fields->noteOf(key)->IsShown()) << key;
    type(fields->box(key), mended);
    EXPECT_FALSE(fields->noteOf(key)->IsShown()) << key;
  }
  EXPECT_TRUE(fields->box("Password")->HasFlag(wxTE_PASSWORD));
  for (const ProfileText& text : kProfileTexts)
    EXPECT_NE(fields->box(text.key)->GetToolTipText(), "") << text.key;
}

TEST_F(SiteFormTest, StaysWholeInASmallWindowWithALotInIt) {
  std::string others;
  for (int i = 0; i < 200; ++i)
    others += "[profile " + std::to_string(i) + std::string(60, 'x') + "]\r\nHost=h\r\n";
  writeFile(profilesFile(), contentsOf(profilesFile()) + others);
  profile.ID.clear();
  profile.Folders.clear();
  for (int i = 0; i < 2000; ++i) profile.Folders.push_back("/folder/" + std::to_string(i));
  profile.SaveTo = "/" + std::string(300, 'p');
  profile.name = "zz";
  ASSERT_TRUE(SaveSiteProfile(profile, profilesFile()));
  WriteSetting("MainWidth", "5400");
  WriteSetting("MainHeight", "4500");
  open();
  EXPECT_EQ(listed().size(), 202u);
  const auto begin = std::chrono::steady_clock::now();
  clickProfile("zz");
  ASSERT_TRUE(isOpen("zz"));
  EXPECT_EQ(folders().size(), 2000u);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10)) << "a tenth is usual";
  focus(fields->box("RunURL"));
  EXPECT_TRUE(waitUntil([&] { return inView(fields->box("RunURL")); }));
  for (const CommandItem& item : kCommandItems) {
    const wxRect button = form->wndTaskPanel->command(item.id)->GetScreenRect();
    EXPECT_TRUE(form->GetScreenRect().Contains(button)) << item.caption.data();
  }
}

}  // namespace
}  // namespace quillmoor
