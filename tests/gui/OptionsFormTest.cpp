// The options form under the user's hands: every control reaches its rule.
#include <gmock/gmock.h>

#include "FormFixture.h"
#include "profiles/frmOptions.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class OptionsFormTest : public FormTest {
 protected:
  void open() {
    options = new frmOptions(frame, settings, ownPrompts());
    present(options);
  }
  void choose(wxRadioButton* option) {
    option->SetValue(true);
    command(option, wxEVT_RADIOBUTTON);
  }
  std::vector<std::string> copies() const {
    std::vector<std::string> all;
    for (const wxString& item : options->lstZipCopies->GetStrings()) all.push_back(item.utf8_string());
    return all;
  }

  frmOptions* options = nullptr;
};

TEST_F(OptionsFormTest, StoresWhatEveryControlSays) {
  open();
  frmOptions& f = *options;
  const std::vector<ControlRow> rows = {
      {f.optIncremental, [&] { choose(f.optIncremental); }, "BackupMode", "2"},
      {f.optFull, [&] { choose(f.optFull); }, "BackupMode", "1"},
      {f.chkUniqueBackup, [&] { tick(f.chkUniqueBackup, true); }, "UniqueBackup", "1"},
      {f.chkNamesAsListed, [&] { tick(f.chkNamesAsListed, true); }, "NamesAsListed", "1"},
      {f.chkCreateZip, [&] { tick(f.chkCreateZip, true); }, "CreateZip", "1"},
      {f.chkSplitZip, [&] { tick(f.chkSplitZip, true); }, "SplitZip", "1"},
      {f.txtZipSpanSize, [&] { f.txtZipSpanSize->SetValue("abc"); }, "ZipSpanSize", "1"},
      {f.chkZipSelfExtract, [&] { tick(f.chkZipSelfExtract, true); }, "ZipSelfExtract", "1"},
      {f.txtZipPassword, [&] { f.txtZipPassword->SetValue(wxString::FromUTF8("geheim ü")); }, "ZipPassword",
       mRC4::Encipher("geheim ü")},
      {f.txtRun[0], [&] { f.txtRun[0]->SetValue("/bin/before"); }, "RunBefore", "/bin/before"},
      {f.txtRun[1], [&] { f.txtRun[1]->SetValue("/bin/after"); }, "RunAfter", "/bin/after"},
      {f.txtRun[2], [&] { f.txtRun[2]->SetValue("http://b/?a&b"); }, "ConnectBefore", "http://b/?a&b"},
      {f.txtRun[3], [&] { f.txtRun[3]->SetValue("http://a/"); }, "ConnectAfter", "http://a/"},
      {f.cmdBrowseRunBefore, [&] { press(f.cmdBrowseRunBefore); }, "RunBefore", "/chosen"},
      {f.cmdBrowseRunAfter, [&] { press(f.cmdBrowseRunAfter); }, "RunAfter", "/chosen"},
      {f.cmdAddCopy, [&] { press(f.cmdAddCopy); }, "ZipCopies", "/chosen"},
      {f.lstZipCopies,
       [&] {
         f.lstZipCopies->SetSelection(0);
         command(f.lstZipCopies, wxEVT_LISTBOX);
         press(f.cmdRemoveCopy);
       },
       "ZipCopies", ""},
  };
  prompts.choice = "/chosen";
  expectEachDoesAsSaid(rows, {"cmdRemoveCopy"});
  EXPECT_EQ(f.txtZipSpanSize->GetValue(), "abc") << "left as typed";
  EXPECT_EQ(f.txtRun[0]->GetValue() + f.txtRun[1]->GetValue(), "/chosen/chosen");
  EXPECT_THAT(prompts.choosers,
              ElementsAre("file Open: All Files (*.*)|*.* @ /bin/before",
                          "file Open: All Files (*.*)|*.* @ /bin/after", "folder Select folder @ "));
  EXPECT_TRUE(prompts.messages.empty());
}

TEST_F(OptionsFormTest, ShowsTheOptionsInForce) {
  settings.BackupMode = 2;
  settings.UniqueBackup = settings.SplitZip = settings.ZipSelfExtract = 1;
  settings.CreateZip = 0;
  settings.ZipSpanSize = 700;
  settings.ZipPassword = mRC4::Encipher("secret");
  settings.ZipCopies = "/b & c|/A";
  settings.RunBefore = "rb";
  settings.RunAfter = "ra";
  settings.ConnectBefore = "cb";
  settings.ConnectAfter = "ca";
  open();
  const frmOptions& f = *options;
  EXPECT_FALSE(f.optFull->GetValue());
  EXPECT_TRUE(f.optIncremental->GetValue());
  EXPECT_TRUE(f.chkUniqueBackup->GetValue() && f.chkSplitZip->GetValue() && f.chkZipSelfExtract->GetValue());
  EXPECT_FALSE(f.chkCreateZip->GetValue());
  EXPECT_TRUE(f.lblUniqueBackupNote->IsShown());
  EXPECT_EQ(f.txtZipSpanSize->GetValue() + f.txtZipPassword->GetValue(), "700secret");
  EXPECT_TRUE(f.txtZipPassword->HasFlag(wxTE_PASSWORD));
  EXPECT_THAT(copies(), ElementsAre("/A", "/b & c"));
  EXPECT_EQ(
      f.txtRun[0]->GetValue() + f.txtRun[1]->GetValue() + f.txtRun[2]->GetValue() + f.txtRun[3]->GetValue(),
      "rbracbca");
  EXPECT_EQ(ReadSetting("RunBefore", "nothing"), "nothing") << "looking stores nothing";
}

TEST_F(OptionsFormTest, EnablesWhatModeArchiveAndListAllow) {
  open();
  frmOptions& f = *options;
  choose(f.optIncremental);
  EXPECT_FALSE(f.chkUniqueBackup->IsEnabled());
  choose(f.optFull);
  EXPECT_TRUE(f.chkUniqueBackup->IsEnabled());
  for (const bool archive : {false, true}) {
    tick(f.chkCreateZip, archive);
    for (const wxWindow* control :
         std::initializer_list<wxWindow*>{f.chkSplitZip, f.lblZipSpanSize, f.txtZipSpanSize, f.lblZipSpanUnit,
                                          f.chkZipSelfExtract, f.lblZipPassword, f.txtZipPassword})
      EXPECT_EQ(control->IsEnabled(), archive) << control->GetName() << control->GetLabel();
    EXPECT_TRUE(f.cmdAddCopy->IsEnabled() && f.lstZipCopies->IsEnabled() && f.txtRun[0]->IsEnabled());
  }
  EXPECT_FALSE(f.cmdRemoveCopy->IsEnabled()) << "nothing is selected";
  prompts.choice = "/1";
  press(f.cmdAddCopy);
  EXPECT_EQ(f.lstZipCopies->GetStringSelection(), "/1");
  focus(f.cmdRemoveCopy);
  press(f.cmdRemoveCopy);
  EXPECT_FALSE(f.cmdRemoveCopy->IsEnabled());
  EXPECT_TRUE(waitUntil([&] { return hasFocus(f.cmdAddCopy); })) << "the next key is not for a box behind it";
}

TEST_F(OptionsFormTest, SaysWhatIsWrongBesideTheField) {
  settings.ZipPassword = "?";
  open();
  frmOptions& f = *options;
  EXPECT_TRUE(f.lblPasswordNote->IsShown());
  EXPECT_THAT(text(f.lblPasswordNote), HasSubstr("cannot be read"));
  EXPECT_FALSE(f.lblSpanSizeNote->IsShown());
  f.txtZipPassword->SetValue("typed");
  f.txtZipSpanSize->SetValue("99999999");
  EXPECT_FALSE(f.lblPasswordNote->IsShown());
  EXPECT_TRUE(f.lblSpanSizeNote->IsShown());
}

TEST_F(OptionsFormTest, BringsIntoViewWhatItSaysBelowTheLastField) {
  open();
  resize(form->FromDIP(wxSize(420, 240)));
  wxTextCtrl* const last = options->txtRun[3];
  focus(last);
  last->SetValue("no address");
  const wxStaticText* const note = options->lblRunNote[3];
  EXPECT_TRUE(note->IsShown());
  EXPECT_TRUE(waitUntil([&] {
    const wxRect view = form->GetScreenRect();
    return view.Contains(note->GetScreenRect()) && view.Contains(last->GetScreenRect());
  })) << note->GetScreenRect().y
      << " in a form at " << form->GetScreenRect().y;
}

TEST_F(OptionsFormTest, LeadsTheTabKeyThroughEveryControlInReadingOrder) {
  settings.ZipCopies = "/a";
  open();
  options->lstZipCopies->SetSelection(0);
  command(options->lstZipCopies, wxEVT_LISTBOX);
  EXPECT_THAT(tabOrder(options->optFull),
              ElementsAre("optFull", "chkUniqueBackup", "chkNamesAsListed", "chkCreateZip", "chkSplitZip",
                          "txtZipSpanSize", "chkZipSelfExtract", "txtZipPassword", "lstZipCopies",
                          "cmdAddCopy", "cmdRemoveCopy", "txtRunBefore", "cmdBrowseRunBefore", "txtRunAfter",
                          "cmdBrowseRunAfter", "txtConnectBefore", "txtConnectAfter"));
}

TEST_F(OptionsFormTest, ScrollsInASmallPaneAndCutsNothing) {
  settings.RunBefore = "/" + std::string(2000, 'x');
  for (int i = 0; i < 200; ++i)
    settings.ZipCopies += (i ? "|/" : "/") + std::string(300, 'y') + std::to_string(i);
  settings.ZipPassword = "?";
  open();
  expectRoom(form->FromDIP(wxSize(780, 520)));
  expectRoom(form->FromDIP(wxSize(420, 240)));
  expectRoom(wxSize(300, 200));
}

}  // namespace
}  // namespace quillmoor
