// The docking panes: what the user makes of them comes back, what cannot be read does not.
#include <algorithm>
#include <set>

#include "GuiFixture.h"

namespace quillmoor {
namespace {

class PanesTest : public GuiTest {
 protected:
  wxWindow* form(std::size_t pane) { return main->panes->GetPage(pane); }
};

TEST_F(PanesTest, ComeBackAsTheyWereArranged) {
  start();
  EXPECT_EQ(main->panes->layout(), DefaultLayout());
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
}

TEST_F(PanesTest, GoBackBehindOneRowOfTabs) {
  start();
  main->panes->Split(1, wxBOTTOM);
  main->panes->Split(2, wxRIGHT);
  clickEvent(main->settingsForm->cmdResetLayout);
  EXPECT_EQ(main->panes->layout().groups.size(), 1u);
  EXPECT_EQ(main->panes->layout().groups[0].panes, DefaultLayout().groups[0].panes);
  for (const Pane& pane : kPanes) {
    main->panes->activate(pane.id);
    EXPECT_TRUE(waitUntil([&] {
      return form(static_cast<std::size_t>(&pane - kPanes.data()))->IsShownOnScreen();
    })) << pane.title;
  }
}

TEST_F(PanesTest, BeginAnewWhenTheirLayoutCannotBeRead) {
  for (const char* stored :
       {"rubbish", "2*,3,4,5 ", "2*,3;4*,5,8 layout2|name=nobody;dir=9|", "2*,3;4*,5,8 "}) {
    WriteSetting("PaneLayout", stored);
    start();
    std::size_t held = 0;
    for (const PaneGroup& group : main->panes->layout().groups) held += group.panes.size();
    EXPECT_EQ(held, kPanes.size()) << stored;
    for (std::size_t i = 0; i < kPanes.size(); ++i) {
      main->panes->activate(kPanes[i].id);
      EXPECT_TRUE(waitUntil([&] { return form(i)->IsShownOnScreen() && form(i)->GetSize().y > 50; }))
          << stored << ": " << kPanes[i].title;
    }
    endProgram();
  }
}

TEST_F(PanesTest, LetTheTabKeyReachEveryControlInReadingOrder) {
  startAtTheBackup();
  main->Raise();
  process->cmdStart->SetFocus();
  ASSERT_TRUE(waitUntil([&] { return hasFocus(process->cmdStart); }));
  for (const wxWindow* const next :
       std::initializer_list<const wxWindow*>{process->rtfLog, process->wndReportControl}) {
    hand.Char(WXK_TAB);
    EXPECT_TRUE(waitUntil([&] { return hasFocus(next); })) << next->GetName();
  }
}

TEST_F(PanesTest, AreGoneThroughByTheKeyboard) {
  start();
  main->Raise();
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
    std::multiset<wxUniChar> seen;
    std::vector<wxWindow*> windows{form(i)};
    while (!windows.empty()) {
      wxWindow* const window = windows.back();
      windows.pop_back();
      for (wxWindow* child : window->GetChildren()) windows.push_back(child);
      const int at = wxControl::FindAccelIndex(window->GetLabel());
      if (at == wxNOT_FOUND) continue;
      const wxUniChar letter =
          wxToupper(wxControl::GetLabelText(window->GetLabel())[static_cast<std::size_t>(at)]);
      EXPECT_EQ(seen.count(letter), 0u) << kPanes[i].title << ": " << window->GetLabel();
      seen.insert(letter);
    }
  }
}

}  // namespace
}  // namespace quillmoor
