// The docking panes: what the user makes of them comes back, what cannot be read does not.
#include <algorithm>
#include <set>

#include "GuiFixture.h"

namespace quillmoor {
namespace {

class PanesTest : public GuiTest {
 protected:
  void startAgain() {
    main->ExitRoutine();
    ASSERT_TRUE(waitUntil([&] { return !main; }));
    start();
    stayOpen();
  }
  wxWindow* form(std::size_t pane) { return main->panes->GetPage(pane); }
};

std::vector<PaneGroup> groupsOf(const PaneLayout& layout) {
  return layout.groups;
}

TEST_F(PanesTest, ComeBackAsTheyWereArranged) {
  start();
  stayOpen();
  EXPECT_EQ(main->panes->layout(), DefaultLayout());
  main->panes->Split(1, wxBOTTOM);
  main->panes->Split(4, wxRIGHT);
  const std::vector<PaneGroup> arranged = groupsOf(main->panes->layout());
  ASSERT_EQ(arranged.size(), 3u);
  ASSERT_TRUE(waitUntil([&] { return form(1)->IsShownOnScreen() && form(0)->IsShownOnScreen(); }));
  const bool backupBelow = form(1)->GetScreenPosition().y > form(0)->GetScreenPosition().y;
  const bool helpBeside = form(4)->GetScreenPosition().x > form(0)->GetScreenPosition().x;
  startAgain();
  EXPECT_EQ(groupsOf(main->panes->layout()), arranged);
  ASSERT_TRUE(waitUntil([&] { return form(1)->IsShownOnScreen() && form(0)->IsShownOnScreen(); }));
  EXPECT_EQ(form(1)->GetScreenPosition().y > form(0)->GetScreenPosition().y, backupBelow);
  EXPECT_EQ(form(4)->GetScreenPosition().x > form(0)->GetScreenPosition().x, helpBeside);
  EXPECT_TRUE(backupBelow);
  EXPECT_TRUE(helpBeside);
}

TEST_F(PanesTest, GoBackBehindOneRowOfTabs) {
  start();
  stayOpen();
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
    stayOpen();
    std::size_t held = 0;
    for (const PaneGroup& group : main->panes->layout().groups) held += group.panes.size();
    EXPECT_EQ(held, kPanes.size()) << stored;
    for (std::size_t i = 0; i < kPanes.size(); ++i) {
      main->panes->activate(kPanes[i].id);
      EXPECT_TRUE(waitUntil([&] { return form(i)->IsShownOnScreen() && form(i)->GetSize().y > 50; }))
          << stored << ": " << kPanes[i].title;
    }
    main->ExitRoutine();
    ASSERT_TRUE(waitUntil([&] { return !main; }));
  }
}

TEST_F(PanesTest, LetTheTabKeyReachEveryControlInReadingOrder) {
  start();
  stayOpen();
  main->panes->activate(kBackupPane);
  frmProcess& form = *main->process;
  ASSERT_TRUE(waitUntil([&] { return form.cmdStart->IsShownOnScreen(); }));
  main->Raise();
  form.cmdStart->SetFocus();
  ASSERT_TRUE(waitUntil([&] { return wxWindow::FindFocus() == form.cmdStart; }));
  wxUIActionSimulator hand;
  hand.Char(WXK_TAB);
  EXPECT_TRUE(waitUntil([&] { return wxWindow::FindFocus() == form.rtfLog; }))
      << "from the button to the log";
  hand.Char(WXK_TAB);
  EXPECT_TRUE(waitUntil([&] {
    const wxWindow* focus = wxWindow::FindFocus();
    return focus && (focus == form.wndReportControl || focus->GetParent() == form.wndReportControl);
  })) << "from the log to the report";
}

TEST_F(PanesTest, AreGoneThroughByTheKeyboard) {
  start();
  stayOpen();
  main->Raise();
  form(0)->SetFocus();
  ASSERT_TRUE(waitUntil([&] { return wxWindow::FindFocus() != nullptr; }));
  wxUIActionSimulator hand;
  const auto goesTo = [&](int modifiers, const Pane& pane) {
    hand.Char(WXK_TAB, modifiers);
    EXPECT_TRUE(waitUntil([&] {
      wxWindow* focus = wxWindow::FindFocus();
      while (focus && focus->GetParent() != main->panes) focus = focus->GetParent();
      return main->panes->activePane() == pane.id &&
             focus == main->panes->GetPage(main->panes->GetSelection());
    })) << pane.title;
  };
  for (std::size_t i = 1; i <= kPanes.size(); ++i) goesTo(wxMOD_CONTROL, kPanes[i % kPanes.size()]);
  goesTo(wxMOD_CONTROL | wxMOD_SHIFT, kPanes.back());
}

TEST_F(PanesTest, HaveNoMnemonicTwice) {
  start();
  stayOpen();
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
