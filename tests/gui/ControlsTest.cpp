// The log's view under a flood of lines, and the tray's messages.
#include <wx/sizer.h>

#include <algorithm>
#include <vector>

#include "GuiFixture.h"
#include "controls/LogView.h"
#include "controls/SeenTimer.h"
#include "controls/TextWidth.h"
#include "engine/RunLog.h"

namespace quillmoor {
namespace {

class LogViewTest : public FrameTest {
 protected:
  LogViewTest() {
    view = new LogView(frame, log, "log", "Log of a test");
    frame->Show();
    EXPECT_TRUE(waitUntil([&] { return view->IsShownOnScreen() && view->GetClientSize().y > 100; }));
  }
  void append(const std::string& text) {
    if (log.length() > RunLog::kLongestLog) log.trim(RunLog::kTrimmed);
    log.append(text);
    view->logChanged();
  }
  bool newestIsInView() {
    int unit = 0;
    view->GetScrollPixelsPerUnit(nullptr, &unit);
    const int last = view->GetViewStart().y + view->GetClientSize().y / unit;
    return last >= static_cast<int>(log.lineCount()) - 1;
  }

  LogText log;
  LogView* view;
};

TEST_F(LogViewTest, KeepsUpWithTenThousandLinesASecond) {
  using Clock = std::chrono::steady_clock;
  constexpr int kLines = 20'000;
  constexpr std::chrono::microseconds kPerLine{100};
  const auto begin = Clock::now();
  std::vector<std::chrono::duration<double, std::milli>> turns;
  for (int line = 0; line < kLines;) {
    const auto due = std::min<std::int64_t>((Clock::now() - begin) / kPerLine + 1, kLines);
    for (; line < due; ++line) append("Retriving: /www/a folder/file " + std::to_string(line) + ".html\r\n");
    const auto turn = Clock::now();
    wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
    turns.emplace_back(Clock::now() - turn);
  }
  const std::chrono::duration<double> took = Clock::now() - begin;
  EXPECT_LT(took.count(), 2.0 * kLines / 10'000) << "lines come faster than they are shown";
  // Nine of ten clicks are answered at once; what the machine does beside may hold up one.
  std::sort(turns.begin(), turns.end());
  EXPECT_LT(turns.at(turns.size() * 9 / 10).count(), 50);
  EXPECT_TRUE(waitUntil([&] { return newestIsInView(); }));
  EXPECT_EQ(log.line(log.lineCount() - 2).text, "Retriving: /www/a folder/file 19999.html");
}

TEST_F(LogViewTest, CopiesWhatIsSelectedWholeLinesAndParts) {
  append("one\r\ntwo\r\nthree");
  view->showNewest();
  EXPECT_FALSE(view->hasSelection());
  EXPECT_EQ(view->selectedText(), "");
  view->selectAll();
  EXPECT_EQ(view->selectedText(), "one\ntwo\nthree");
  log.trim(5);
  EXPECT_EQ(view->selectedText(), "two\nthree") << "what is gone from the log is gone from the selection";
  log.trim(1000);
  EXPECT_EQ(view->selectedText(), "");
}

TEST_F(LogViewTest, IsMarkedByTheMouseAndFollowsTheLogAgain) {
  append("first line\r\nsecond line\r\n");
  view->showNewest();
  wxUIActionSimulator mouse;  // serves events when it is made
  int unit = 0;
  view->GetScrollPixelsPerUnit(nullptr, &unit);
  const wxPoint corner = view->ClientToScreen(wxPoint(0, 0));
  mouse.MouseMove(corner + wxPoint(1, unit / 2));
  mouse.MouseDown();
  mouse.MouseMove(corner + wxPoint(view->GetClientSize().x - 40, unit / 2));
  ASSERT_TRUE(waitUntil([&] { return view->selectedText() == "first line"; })) << view->selectedText();
  for (int i = 0; i < 100; ++i) append("more\r\n");
  EXPECT_FALSE(
      waitUntil([&] { return newestIsInView(); }, std::chrono::milliseconds(3 * LogView::kShowEvery)))
      << "the log runs away under the pointer";
  mouse.MouseUp();
  append("last\r\n");
  EXPECT_TRUE(waitUntil([&] { return newestIsInView(); }));
  EXPECT_EQ(view->selectedText(), "first line");
}

TEST_F(LogViewTest, KeepsTheNewestInViewWhenALongLineBringsAScrollBar) {
  for (int i = 0; i < 100; ++i) append("line\r\n");
  view->showNewest();
  ASSERT_TRUE(waitUntil([&] { return newestIsInView(); }));
  append(std::string(1000, '-') + "\r\n");
  EXPECT_TRUE(waitUntil([&] {
    return view->GetVirtualSize().x > view->GetClientSize().x && newestIsInView();
  })) << view->GetViewStart().y;
}

TEST(TextWidth, GrowsWithTheFontAndNeverFallsBelowThePixels) {
  wxFrame window(nullptr, wxID_ANY, "Widths");
  const wxFont usual = window.GetFont();
  window.SetFont(usual.Scaled(0.5f));
  EXPECT_EQ(WidthForText(window, 100), window.FromDIP(100));
  window.SetFont(usual.Scaled(3));
  EXPECT_GE(WidthForText(window, 100), window.GetTextExtent("0").x * 12);
}

TEST(CTray, RaisesTheMoveAndThenTheEventButNothingInsideOne) {
  CTray tray;
  std::vector<std::string> events;
  const auto note = [&](const char* name) { return [&events, name] { events.emplace_back(name); }; };
  tray.MouseMove = [&](int, int, int, int) { events.emplace_back("move"); };
  tray.LButtonDown = note("left down");
  tray.LButtonUp = note("left up");
  tray.LButtonDblClk = note("left double");
  tray.RButtonDown = note("right down");
  tray.RButtonDblClk = note("right double");
  tray.RButtonUp = [&] {
    events.emplace_back("right up");
    tray.mouseMessage(517);  // again, while the menu is open
    tray.mouseMessage(512);
  };
  const struct {
    int message;
    std::vector<std::string> raised;
  } cases[] = {{511, {"move"}},
               {512, {"move"}},
               {513, {"move", "left down"}},
               {514, {"move", "left up"}},
               {515, {"move", "left double"}},
               {516, {"move", "right down"}},
               {517, {"move", "right up"}},
               {518, {"move", "right double"}},
               {519, {"move"}}};
  for (const auto& one : cases) {
    events.clear();
    tray.mouseMessage(one.message);
    EXPECT_EQ(events, one.raised) << one.message;
  }
}

TEST(CTray, NeedsAHostToBeShownAndCutsItsTip) {
  CTray tray;
  EXPECT_FALSE(tray.Show());
  tray.SetTip(std::string(80, 'x'));
  EXPECT_EQ(tray.Tip(), std::string(63, 'x'));
}

TEST(SeenTimerTest, OutlivesTicksThatFail) {
  int ticks = 0;
  SeenTimer timer;
  wxFrame window(nullptr, wxID_ANY, "Ticks");
  timer.begin(&window, 5, [&] {
    if (++ticks == 1) throw std::runtime_error("no label today");
    if (ticks == 2) throw ProgramEnding{};
  });
  window.Show();
  EXPECT_TRUE(waitUntil([&] { return ticks >= 4; }));
}

}  // namespace
}  // namespace quillmoor
