// What the backup pane says under its report.
#include "GuiFixture.h"
#include "platform/system/Notices.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project

class NoticeTest : public GuiTest {};

TEST_F(NoticeTest, NamesWhatFailedAndLeadsToItInTheLog) {
  for (int i = 0; i < 60; ++i) server.addFile("/f" + std::to_string(100 + i), "x");
  server.on("RETR /f101", replies("550 Forbidden."));
  startAtTheBackup();
  main->SetSize(main->GetMinSize());
  EXPECT_FALSE(process->lblNotice->IsShown());
  process->startBackup();
  ASSERT_TRUE(waitUntil([&] { return process->lblNotice->IsShownOnScreen(); }));
  EXPECT_EQ(process->lblNotice->GetLabelText(),
            "site: 1 failure: /f101: The server refused RETR: 550 Forbidden.");
  for (const wxWindow* const part : std::initializer_list<const wxWindow*>{
           process->cmdShowFailure, process->rtfLog, process->wndReportControl}) {
    EXPECT_TRUE(part->GetClientSize().y > 20 && process->GetScreenRect().Contains(part->GetScreenRect()))
        << part->GetName() << ", in the smallest window";
  }
  clickEvent(process->cmdShowFailure);
  EXPECT_EQ(process->rtfLog->selectedText(), "Ftp Error: The server refused RETR: 550 Forbidden.");

  server.forgetRules();
  process->startBackup();
  EXPECT_TRUE(waitUntil([&] { return !process->lblNotice->IsShown(); }))
      << "the next run says something of its own";
  EXPECT_TRUE(waitUntil([&] { return !process->active(); }));
}

TEST_F(NoticeTest, ShowsWhatThePartsBelowHaveToSay) {
  WriteSetting("FtpRetryCount", "99999999999");
  startAtTheBackup();
  main->SetSize(main->GetMinSize());
  ASSERT_TRUE(process->lblNotice->IsShown());
  EXPECT_NE(process->lblNotice->GetLabelText().ToStdString().find("FtpRetryCount"), std::string::npos);
  Notice("Other users could read it.");
  EXPECT_TRUE(waitUntil([&] { return process->lblNotice->GetLabelText() == "Other users could read it."; }));
  WriteSetting("FtpRetryCount", "5");
}

}  // namespace
}  // namespace quillmoor
