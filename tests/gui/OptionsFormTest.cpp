// The options form: each control is wired to its setting.
#include <gmock/gmock.h>

#include "FormFixture.h"
#include "profiles/frmOptions.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

using ::testing::HasSubstr;

class OptionsFormTest : public FormTest {
 protected:
  void open() {
    options = new frmOptions(frame, settings, ownPrompts());
    present(options);
  }

  frmOptions* options = nullptr;
};

TEST_F(OptionsFormTest, StoresWhatIsEnteredAndShowsItAgain) {
  open();
  frmOptions& f = *options;
  prompts.choice = "/chosen";
  const std::vector<ControlRow> rows = {
      {f.optIncremental, "", "BackupMode", "2"},
      {f.optFull, "", "BackupMode", "1"},
      {f.chkUniqueBackup, "1", "UniqueBackup", "1"},
      {f.chkNamesAsListed, "1", "NamesAsListed", "1"},
      {f.chkCreateZip, "1", "CreateZip", "1"},
      {f.chkSplitZip, "1", "SplitZip", "1"},
      {f.txtZipSpanSize, "700", "ZipSpanSize", "700"},
      {f.chkZipSelfExtract, "1", "ZipSelfExtract", "1"},
      {f.txtZipPassword, "geheim ü", "ZipPassword", mRC4::Encipher("geheim ü")},
      {f.txtRun[0], "/bin/before", "RunBefore", "/bin/before"},
      {f.txtRun[1], "/bin/after", "RunAfter", "/bin/after"},
      {f.txtRun[2], "http://b/?a&b", "ConnectBefore", "http://b/?a&b"},
      {f.txtRun[3], "http://a/", "ConnectAfter", "http://a/"},
      {f.cmdBrowseRunBefore, "", "RunBefore", "/chosen"},
      {f.cmdBrowseRunAfter, "", "RunAfter", "/chosen"},
      {f.cmdAddCopy, "", "ZipCopies", "/chosen"},
      {f.lstZipCopies, "/chosen", "ZipCopies", "/chosen"},
      {f.cmdRemoveCopy, "", "ZipCopies", ""},
      {f.cmdAddCopy, "", "ZipCopies", "/chosen"},
      {f.optIncremental, "", "BackupMode", "2"},
  };
  expectStored(rows);
  EXPECT_TRUE(f.txtZipPassword->HasFlag(wxTE_PASSWORD));
  EXPECT_TRUE(f.lblUniqueBackupNote->IsShown());
  EXPECT_TRUE(prompts.messages.empty());
  const auto before = shown();
  settings = LoadApplicationSettings();
  open();
  EXPECT_EQ(shown(), before);
}

TEST_F(OptionsFormTest, EnablesWhatModeArchiveAndListAllow) {
  open();
  frmOptions& f = *options;
  use(f.optIncremental);
  use(f.chkCreateZip, "0");
  for (const wxWindow* control : std::initializer_list<wxWindow*>{
           f.chkUniqueBackup, f.chkSplitZip, f.txtZipSpanSize, f.chkZipSelfExtract, f.txtZipPassword})
    EXPECT_FALSE(control->IsEnabled()) << control->GetName();
  EXPECT_FALSE(f.cmdRemoveCopy->IsEnabled()) << "nothing is selected";
  prompts.choice = "/1";
  use(f.cmdAddCopy);
  focus(f.cmdRemoveCopy);
  use(f.cmdRemoveCopy);
  EXPECT_TRUE(waitUntil([&] { return hasFocus(f.cmdAddCopy); })) << "the next key goes to another box";
}

TEST_F(OptionsFormTest, SaysBesideTheFieldWhatIsWrongAndBringsItIntoView) {
  settings.ZipPassword = "?";
  open();
  frmOptions& f = *options;
  EXPECT_TRUE(f.lblPasswordNote->IsShown() && !f.lblSpanSizeNote->IsShown());
  EXPECT_THAT(text(f.lblPasswordNote), HasSubstr("cannot be read"));
  use(f.txtZipPassword, "typed");
  use(f.txtZipSpanSize, "99999999");
  EXPECT_TRUE(!f.lblPasswordNote->IsShown() && f.lblSpanSizeNote->IsShown());
  resize(form->FromDIP(wxSize(420, 240)));
  focus(f.txtRun[3]);
  use(f.txtRun[3], "no address");
  EXPECT_TRUE(f.lblRunNote[3]->IsShown());
  EXPECT_TRUE(waitUntil([&] {
    const wxRect view = form->GetScreenRect();
    return view.Contains(f.lblRunNote[3]->GetScreenRect()) && view.Contains(f.txtRun[3]->GetScreenRect());
  }));
}

TEST_F(OptionsFormTest, IsReachedByTheTabKeyAndCutsNothingInASmallPane) {
  settings.RunBefore = "/" + std::string(2000, 'x');
  for (int i = 0; i < 200; ++i)
    settings.ZipCopies += (i ? "|/" : "/") + std::string(300, 'y') + std::to_string(i);
  settings.ZipPassword = "?";
  open();
  use(options->lstZipCopies, options->lstZipCopies->GetString(0).utf8_string());
  expectTabOrder(options->optFull);
  expectRoom(form->FromDIP(wxSize(780, 520)));
  expectRoom(form->FromDIP(wxSize(420, 240)));
  expectRoom(wxSize(300, 200));
}

}  // namespace
}  // namespace quillmoor
