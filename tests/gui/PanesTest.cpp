// The docking panes: their arrangement is kept, an unreadable one is replaced by the default.
#include <set>

#include "GuiFixture.h"

namespace quillmoor {
namespace {

class PanesTest : public GuiTest {
 protected:
  wxWindow* form(std::size_t pane) { return main->panes->GetPage(pane); }
  void expectEachCanBeShown(const char* stored) {
    for (std::size_t i = 0; i < kPanes.size(); ++i) {
      main->panes->activate(kPanes[i].id);
      EXPECT_TRUE(waitUntil([&] { return form(i)->IsShownOnScreen() && form(i)->GetSize().y > 50; }))
          << stored << ": " << kPanes[i].title;
    }
  }
};

TEST_F(PanesTest, ComeBackAsTheyWereArrangedUntilTheyAreReset) {
  start();
  main->panes->Split(1, wxBOTTOM);
  main->panes->Split(4, wxRIGHT);
  const std::vector<PaneGroup> arranged = main->panes->layout().groups;
  ASSERT_EQ(arranged.size(), 3u);
  endProgram();
  start();
  EXPECT_EQ(main->panes->layout().groups, arranged);
  ASSERT_TRUE(waitUntil([&] { return form(1)->IsShownOnScreen() && form(0)->IsShownOnScreen(); }));
  EXPECT_GT(form(1)->GetScreenPosition().y, form(0)->GetScreenPosition().y);
  EXPECT_GT(form(4)->GetScreenPosition().x, form(0)->GetScreenPosition().x);
  clickEvent(main->settingsForm->cmdResetLayout);
  EXPECT_EQ(main->panes->layout().groups.size(), 1u);
  EXPECT_EQ(main->panes->layout().groups[0].panes, DefaultLayout().groups[0].panes);
  expectEachCanBeShown("reset");
}

TEST_F(PanesTest, BeginAnewWhenTheirLayoutCannotBeRead) {
  for (const char* stored : {"rubbish", "2*,3;4*,5,8 layout2|name=nobody;dir=9|", "2*,3;4*,5,8 "}) {
    WriteSetting("PaneLayout", stored);
    start();
    expectEachCanBeShown(stored);
    endProgram();
  }
}

TEST_F(PanesTest, LetTheTabKeyReachEveryControlInReadingOrder) {
  startAtTheBackup();
  expectTabOrder({process->cmdStart, process->rtfLog, process->wndReportControl});
}

TEST_F(PanesTest, AreGoneThroughByTheKeyboard) {
  start();
  form(0)->SetFocus();
  ASSERT_TRUE(waitUntil([&] { return wxWindow::FindFocus() != nullptr; }));
  const auto goesTo = [&](int modifiers, const Pane& pane) {
    hand.Char(WXK_TAB, modifiers);
    EXPECT_TRUE(waitUntil([&] {
      return main->panes->activePane() == pane.id &&
             hasFocus(main->panes->GetPage(main->panes->GetSelection()));
    })) << pane.title;
  };
  for (std::size_t i = 1; i <= kPanes.size(); ++i) goesTo(wxMOD_CONTROL, kPanes[i % kPanes.size()]);
  goesTo(wxMOD_CONTROL | wxMOD_SHIFT, kPanes.back());
}

TEST_F(PanesTest, HaveNoMnemonicTwice) {
  start();
  for (std::size_t i = 0; i < kPanes.size(); ++i) {
    std::set<wxUniChar> seen;
    std::vector<wxWindow*> windows{form(i)};
    while (!windows.empty()) {
      wxWindow* const window = windows.back();
      windows.pop_back();
      for (wxWindow* child : window->GetChildren()) windows.push_back(child);
      const int at = wxControl::FindAccelIndex(window->GetLabel());
      if (at == wxNOT_FOUND) continue;
      const wxString text = wxControl::GetLabelText(window->GetLabel());
      EXPECT_TRUE(seen.insert(wxToupper(text[static_cast<std::size_t>(at)])).second)
          << kPanes[i].title << ": " << window->GetLabel();
    }
  }
}

}  // namespace
}  // namespace quillmoor
