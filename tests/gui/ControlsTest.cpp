// The controls that draw: the log's view under a flood of lines, the players, the pictures, the tray's
// events.
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/image.h>
#include <wx/notebook.h>
#include <wx/settings.h>
#include <wx/sizer.h>

#include <algorithm>
#include <vector>

#include "GuiFixture.h"
#include "controls/AnimationPlayer.h"
#include "controls/LogView.h"
#include "controls/Pictures.h"
#include "controls/RichTextView.h"
#include "controls/SeenTimer.h"
#include "controls/WxColours.h"
#include "controls/xpProgressBar.h"
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
  // Nine of ten turns are short enough to answer a click at once; other programs may delay the tenth.
  std::sort(turns.begin(), turns.end());
  EXPECT_LT(turns.at(turns.size() * 9 / 10).count(), 50);
  EXPECT_TRUE(waitUntil([&] { return newestIsInView(); }));
  EXPECT_EQ(log.line(log.lineCount() - 2).text, "Retriving: /www/a folder/file 19999.html");
  append(std::string(1000, '-') + "\r\n");  // brings a scroll bar
  EXPECT_TRUE(
      waitUntil([&] { return view->GetVirtualSize().x > view->GetClientSize().x && newestIsInView(); }));
}

TEST_F(LogViewTest, CopiesWhatIsSelectedWholeLinesAndParts) {
  append("one\r\ntwo\r\nthree");
  view->showNewest();
  EXPECT_FALSE(view->hasSelection());
  view->selectAll();
  EXPECT_EQ(view->selectedText(), "one\ntwo\nthree");
  log.trim(5);
  EXPECT_EQ(view->selectedText(), "two\nthree") << "what is gone from the log is gone from the selection";
}

TEST_F(LogViewTest, IsMarkedByTheMouseAndFollowsTheLogAgain) {
  append("first line\r\nsecond line\r\n");
  view->showNewest();
  wxUIActionSimulator mouse;  // its constructor serves events
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

TEST(CTray, RaisesTheMoveAndThenTheEventButNothingInsideOne) {
  CTray tray;
  EXPECT_FALSE(tray.Show()) << "it has no host";
  tray.SetTip(std::string(80, 'x'));
  EXPECT_EQ(tray.Tip(), std::string(63, 'x'));
  std::string events;
  tray.MouseMove = [&](int, int, int, int) { events += "move "; };
  const std::pair<std::function<void()>*, std::string> raised[] = {
      {&tray.LButtonDown, "left down"},     {&tray.LButtonUp, "left up"},
      {&tray.LButtonDblClk, "left double"}, {&tray.RButtonDown, "right down"},
      {&tray.RButtonUp, "right up"},        {&tray.RButtonDblClk, "right double"}};
  for (const auto& [event, name] : raised) {
    *event = [&events, &tray, text = name] {
      events += text;
      tray.mouseMessage(517);  // again, while a menu is open
    };
  }
  int message = 513;
  for (const auto& [event, name] : raised) {
    events.clear();
    tray.mouseMessage(message++);
    EXPECT_EQ(events, "move " + name);
  }
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

const std::string kAssets = QUILLMOOR_ASSETS;

class PlayersTest : public FrameTest {
 protected:
  template <typename Control>
  Control* shown(Control* control) {
    auto* const all = new wxBoxSizer(wxVERTICAL);
    all->Add(control, wxSizerFlags().Border(wxALL, 30));
    frame->SetSizer(all);
    frame->Show();
    frame->Layout();
    EXPECT_TRUE(waitUntil([&] { return control->IsShownOnScreen() && control->GetClientSize().y > 5; }));
    return control;
  }
  /// The control as it is drawn, row by row.
  static std::vector<Rgb> drawn(wxWindow* control) {
    wxSize size = control->GetClientSize();
    size.IncTo(wxSize(1, 1));  // it is empty until the frame has its size
    wxBitmap bitmap(size);
    wxMemoryDC memory(bitmap);
    wxClientDC client(control);
    memory.Blit(wxPoint(0, 0), size, &client, wxPoint(0, 0));
    memory.SelectObject(wxNullBitmap);
    const wxImage image = bitmap.ConvertToImage();
    std::vector<Rgb> pixels;
    for (int i = 0; i < size.x * size.y; ++i)
      pixels.push_back({image.GetData()[3 * i], image.GetData()[3 * i + 1], image.GetData()[3 * i + 2]});
    return pixels;
  }
  static std::ptrdiff_t countOf(wxWindow* control, Rgb colour) {
    const std::vector<Rgb> pixels = drawn(control);
    return std::count(pixels.begin(), pixels.end(), colour);
  }
};

TEST_F(PlayersTest, PlaysTheAnimationOverTheWindowsBackground) {
  auto* const player = shown(new AnimationPlayer(frame));
  ASSERT_TRUE(player->Open(kAssets + "/Server.avi")) << player->error();
  EXPECT_EQ(player->GetBestSize(), player->FromDIP(wxSize(272, 60)));
  ASSERT_TRUE(waitUntil([&] { return countOf(player, {0x6F, 0x84, 0x98}) > 100; })) << "the server";
  const auto still = drawn(player);
  EXPECT_EQ(countOf(player, {255, 0, 255}), 0) << "the colour that stands for the background";
  player->Play();
  EXPECT_TRUE(player->IsPlaying());
  EXPECT_TRUE(waitUntil([&] { return drawn(player) != still; }));
  player->Stop();
  EXPECT_FALSE(player->IsPlaying());
  EXPECT_TRUE(waitUntil([&] { return drawn(player) == still; })) << "back at the first frame";

  player->Play();
  wxTestingModalHook noBox;
  EXPECT_FALSE(player->Open(kAssets + "/Missing.avi"));
  EXPECT_FALSE(player->IsPlaying());
  EXPECT_TRUE(waitUntil([&] { return drawn(player) == std::vector(still.size(), still[0]); }))
      << "a rest of the picture is left";
}

TEST_F(PlayersTest, DrawsProgressInItsColour) {
  auto* const bar = new xpProgressBar(frame, wxID_ANY, wxDefaultPosition, wxSize(200, 20));
  bar->SetColor(wxColour(0, 0, 200));
  bar->SetValue(50);
  shown(bar);
  // In the gradient every shade has more blue than red.
  const auto filledTo = [&](std::size_t x) {
    const auto pixels = drawn(bar);
    const auto isBlue = [&](std::size_t at) { return pixels[2000 + at].blue > pixels[2000 + at].red + 60; };
    return pixels.size() == 4000 && isBlue(x - 10) && !isBlue(x + 10);
  };
  EXPECT_TRUE(waitUntil([&] { return filledTo(100); }));
  bar->SetMax(200);
  EXPECT_TRUE(waitUntil([&] { return filledTo(50); })) << "not drawn anew";
  bar->SetValue(1000);
  EXPECT_EQ(std::to_string(bar->GetValue()) + " " + bar->GetText(), "200 100%");
}

TEST_F(PlayersTest, ShowsTheGuideWhenItsTabIsOpened) {
  auto* const book = new wxNotebook(frame, wxID_ANY, wxDefaultPosition, wxSize(500, 300));
  book->AddPage(new wxWindow(book, wxID_ANY), "before");
  auto* const view = new RichTextView(book, wxID_ANY, "Help");
  book->AddPage(view, "Help");
  shown(book);
  EXPECT_TRUE(view->LoadFile(kAssets + "/Help.rtf"));
  EXPECT_TRUE(view->GetValue().empty());
  book->SetSelection(1);
  EXPECT_TRUE(waitUntil([&] { return view->GetValue().Contains("The first backup"); }));
  EXPECT_FALSE(view->IsEditable());
  EXPECT_EQ(view->GetInsertionPoint(), 0);
  wxTextAttr title;
  ASSERT_TRUE(view->GetStyle(view->GetValue().Find("Quillmoor") + 1, title));
  EXPECT_EQ(FromWx(title.GetTextColour()),
            ReadableOn({47, 131, 168}, FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW))));
  EXPECT_EQ(title.GetFont().GetWeight(), wxFONTWEIGHT_BOLD);

  wxTestingModalHook noBox;
  EXPECT_FALSE(view->LoadFile(kAssets + "/Missing.rtf"));
  EXPECT_TRUE(view->GetValue().Trim(false).empty());
}

TEST(Pictures, AreThere) {
  for (const char* used : {"panes/profiles", "panes/backup", "panes/settings", "panes/options", "panes/help",
                           "status/connected", "status/disconnected", "icons/tray", "browser/Cdup"})
    EXPECT_TRUE(Picture(used).IsOk()) << used;
  EXPECT_FALSE(Picture("panes/profile").IsOk());
  EXPECT_EQ(Picture("panes/help").GetBitmap(wxSize(64, 64)).GetSize(), wxSize(64, 64));
  EXPECT_EQ(ApplicationIcon().GetIconCount(), 7U);
}

}  // namespace
}  // namespace quillmoor
