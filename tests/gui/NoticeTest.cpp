// What the backup pane says under its report.
#include "GuiFixture.h"
#include "platform/Notices.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project

class NoticeTest : public GuiTest {
 protected:
  void showBackupPane() {
    start();
    stayOpen();
    main->SetSize(main->GetMinSize());
    main->panes->activate(kBackupPane);
    form = main->process;
    ASSERT_TRUE(waitUntil([&] { return form->cmdStart->IsShownOnScreen(); }));
  }

  frmProcess* form = nullptr;
};

TEST_F(NoticeTest, NamesWhatFailedAndLeadsToItInTheLog) {
  for (int i = 0; i < 60; ++i) server.addFile("/f" + std::to_string(100 + i), "x");
  server.on("RETR /f101", replies("550 Forbidden."));
  showBackupPane();
  EXPECT_FALSE(form->lblNotice->IsShown());
  form->startBackup();
  ASSERT_TRUE(waitUntil([&] { return form->lblNotice->IsShownOnScreen(); }));
  EXPECT_EQ(form->lblNotice->GetLabelText(),
            "site: 1 failure: /f101: The server refused RETR: 550 Forbidden.");
  for (const wxWindow* const part :
       std::initializer_list<const wxWindow*>{form->cmdShowFailure, form->rtfLog, form->wndReportControl}) {
    EXPECT_TRUE(part->GetClientSize().y > 20 && form->GetScreenRect().Contains(part->GetScreenRect()))
        << part->GetName() << ", in the smallest window";
  }
  clickEvent(form->cmdShowFailure);
  EXPECT_EQ(form->rtfLog->selectedText(), "Ftp Error: The server refused RETR: 550 Forbidden.");

  server.forgetRules();
  form->startBackup();
  EXPECT_TRUE(waitUntil([&] { return !form->lblNotice->IsShown(); }))
      << "the next run says something of its own";
  EXPECT_TRUE(waitUntil([&] { return !form->active(); }));
}

TEST_F(NoticeTest, ShowsWhatThePartsBelowHaveToSay) {
  WriteSetting("FtpRetryCount", "99999999999");
  showBackupPane();
  ASSERT_TRUE(form->lblNotice->IsShown());
  EXPECT_NE(form->lblNotice->GetLabelText().ToStdString().find("FtpRetryCount"), std::string::npos);
  Notice("Other users could read it.");
  EXPECT_TRUE(waitUntil([&] { return form->lblNotice->GetLabelText() == "Other users could read it."; }));
  WriteSetting("FtpRetryCount", "5");
}

}  // namespace
}  // namespace quillmoor
