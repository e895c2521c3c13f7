// The window "Browse FTP Site" as it is opened from a profile: walked, ticked, closed in the middle of
// things.
#include <wx/modalhook.h>

#include <chrono>
#include <future>

#include "SiteFormFixture.h"

namespace quillmoor {
namespace {

using Session = testing::ScriptedFtpServer::Session;

class BrowserFormTest : public SiteFormTest {
 protected:
  /// The profile "site" in the form, and its site in the browser.
  void browse() {
    openSite();
    connect();
    ASSERT_TRUE(waitUntil([&] { return listed("/"); }));
    ASSERT_TRUE(waitUntil([&] { return window->IsActive() && window->lvwRemote->IsShownOnScreen(); }));
  }
  void connect() {
    clickEvent(fields->cmdConnect);
    window = form->browser();
    ASSERT_TRUE(window);
  }
  /// Nothing is in progress, and the folder of that path is shown.
  bool listed(const wxString& path) const {
    return window && !window->browser().busy() && window->cmbRemoteDir->GetValue() == path &&
           window->lvwRemote->shownRows() == window->browser().rowCount() && window->browser().rowCount() > 0;
  }
  bool shows(const wxString& path, const std::vector<std::string>& wanted) {
    return waitUntil([&] { return listed(path) && rows() == wanted; });
  }
  std::vector<std::string> rows() const {
    std::vector<std::string> all;
    const RemoteBrowser& browser = window->browser();
    for (std::size_t row = 0; row < browser.rowCount(); ++row)
      all.push_back((browser.checked(row) ? "x " : "") + browser.cell(row, 0));
    return all;
  }
  void clickAt(const wxRect& place, bool twice = false) {
    hand.MouseMove(place.x + std::min(place.width / 2, 40), place.y + place.height / 2);
    twice ? hand.MouseDblClick() : hand.MouseClick();
  }
  wxRect seen(std::function<wxRect()> place) {
    EXPECT_TRUE(waitUntil([&] { return !place().IsEmpty(); }));
    return place();
  }
  void clickBox(std::size_t row) {
    clickAt(seen([&] { return window->lvwRemote->boxPlace(row); }));
  }
  void doubleClick(std::size_t row) {
    clickAt(seen([&] { return window->lvwRemote->namePlace(row); }), true);
  }
  bool gone() {
    return waitUntil([&] { return !form->browser(); });
  }

  wxWeakRef<frmFtpBrowse> window;
};

using Rows = std::vector<std::string>;

TEST_F(BrowserFormTest, WalksTheSiteAndAddsWhatIsTicked) {
  server.addFile("/readme.txt", "hello");
  server.addFile("/www/index.html", "hello");
  server.addFolder("/www/images");
  browse();
  EXPECT_EQ(window->GetTitle(), "Browse FTP Site");
  EXPECT_EQ(rows(), (Rows{"..", "www", "readme.txt"}));
  clickBox(1);
  EXPECT_TRUE(waitUntil([&] { return rows()[1] == "x www"; }));
  clickBox(2);
  click(window->cmdAdd);
  EXPECT_TRUE(waitUntil([&] { return folders() == std::vector<std::string>{"/", "/www"}; }));
  EXPECT_EQ(rows(), (Rows{"..", "x www", "readme.txt"})) << "a file keeps a tick";
  clickEvent(window->cmdAdd);
  EXPECT_EQ(folders().size(), 2u) << "added twice";

  const Rows www = {"..", "images", "index.html"};
  doubleClick(1);
  ASSERT_TRUE(shows("/www", www));
  clickEvent(window->cmdSelectAll);
  EXPECT_EQ(rows(), (Rows{"x ..", "x images", "index.html"}));
  clickEvent(window->cmdUnSelectAll);
  EXPECT_EQ(rows(), www);
  window->lvwRemote->selectRow(1);
  focus(window->lvwRemote);
  hand.Char(WXK_SPACE);
  EXPECT_TRUE(waitUntil([&] { return rows()[1] == "x images"; })) << "the space bar does not tick";
  doubleClick(0);
  ASSERT_TRUE(shows("/", {"..", "www", "readme.txt"}));

  window->cmbRemoteDir->SetValue("/www");
  clickEvent(window->cmdChDir);
  ASSERT_TRUE(shows("/www", www));
  EXPECT_TRUE(waitUntil([&] { return hasFocus(window->lvwRemote); }));
  window->cmbRemoteDir->SetValue("/www/images");
  focus(window->cmbRemoteDir);
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(shows("/www/images", {".."}));
  ASSERT_EQ(window->cmbRemoteDir->GetCount(), 3u) << "the folders seen so far";
  window->cmbRemoteDir->SetSelection(1);
  command(window->cmbRemoteDir, wxEVT_COMBOBOX);
  ASSERT_TRUE(shows("/www", www));

  server.addFolder("/www/new");
  clickEvent(window->cmdRefresh);
  ASSERT_TRUE(shows("/www", {"..", "images", "new", "index.html"}));
  click(window->chkFoldersOnly);
  ASSERT_TRUE(shows("/www", {"..", "images", "new"}));
  click(window->cmdClose);
  ASSERT_TRUE(gone());
  EXPECT_EQ(server.count("QUIT"), 1u);
}

TEST_F(BrowserFormTest, IsWalkedWithTheKeyboardAlone) {
  server.addFile("/www/index.html", "hello");
  browse();
  EXPECT_TRUE(waitUntil([&] { return hasFocus(window->lvwRemote); }));
  for (const int key : {WXK_DOWN, WXK_SPACE}) hand.Char(key);
  ASSERT_TRUE(waitUntil([&] { return rows() == Rows{"..", "x www"}; }));
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(shows("/www", {"..", "index.html"}));
  hand.Char(WXK_RETURN);
  EXPECT_TRUE(shows("/", {"..", "www"}));
}

TEST_F(BrowserFormTest, ShowsEveryFolderFromItsTop) {
  for (int i = 0; i < 100; ++i) {
    for (const char* const name : {"/f", "/www/f"}) server.addFolder(name + std::to_string(i));
  }
  browse();
  ASSERT_TRUE(waitUntil([&] { return !window->lvwRemote->namePlace(0).IsEmpty(); }));
  focus(window->lvwRemote);
  hand.Char(WXK_END);
  ASSERT_TRUE(waitUntil([&] { return !window->lvwRemote->namePlace(101).IsEmpty(); }));
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(waitUntil([&] { return listed("/www"); }));
  EXPECT_TRUE(waitUntil([&] { return !window->lvwRemote->namePlace(0).IsEmpty(); }));
}

TEST_F(BrowserFormTest, ClosesTheDroppedListAloneWithEsc) {
  server.addFolder("/www");
  browse();
  doubleClick(1);
  ASSERT_TRUE(shows("/www", {".."}));
  const std::size_t lists = server.count("LIST");
  focus(window->cmbRemoteDir);
  bool dropped = false;
  for (const auto& type : {wxEVT_COMBOBOX_DROPDOWN, wxEVT_COMBOBOX_CLOSEUP}) {
    window->cmbRemoteDir->Bind(type, [&](wxCommandEvent& event) {
      dropped = event.GetEventType() == wxEVT_COMBOBOX_DROPDOWN;
      event.Skip();
    });
  }
  window->cmbRemoteDir->Popup();
  ASSERT_TRUE(waitUntil([&] { return dropped; }));
  for (const int key : {WXK_UP, WXK_ESCAPE}) hand.Char(key);
  EXPECT_TRUE(waitUntil([&] { return !dropped; }));
  ASSERT_TRUE(window && window->IsShown());
  EXPECT_TRUE(listed("/www")) << window->cmbRemoteDir->GetValue();
  EXPECT_EQ(server.count("LIST"), lists) << "what the arrow keys had come to is no choice";
  hand.Char(WXK_ESCAPE);
  EXPECT_TRUE(gone());
}

TEST_F(BrowserFormTest, ComesBackWhereItStoodAndAsItWas) {
  browse();
  window->SetSize(wxRect(window->FromDIP(wxPoint(150, 120)), window->FromDIP(wxSize(640, 420))));
  ASSERT_TRUE(waitUntil([&] { return window->GetSize() == window->FromDIP(wxSize(640, 420)); }));
  const wxRect stood = window->GetRect();
  // What the toolkit says of a window's place may be what it has asked for; that of a control it looks up.
  ASSERT_TRUE(waitUntil([&] {
    const int beside = window->lvwRemote->GetScreenPosition().x - stood.x;
    return beside >= 0 && beside < 50;
  }));
  const wxPoint list = window->lvwRemote->GetScreenPosition();
  tick(window->chkFoldersOnly, true);
  hand.Char(WXK_ESCAPE);
  ASSERT_TRUE(gone());
  connect();
  EXPECT_TRUE(waitUntil([&] { return window->GetRect() == stood; }))
      << window->GetRect().x << "," << window->GetRect().y << " for " << stood.x << "," << stood.y;
  ASSERT_TRUE(waitUntil([&] { return window->IsActive() && listed("/"); }));
  EXPECT_TRUE(waitUntil([&] { return window->lvwRemote->GetScreenPosition() == list; }))
      << window->lvwRemote->GetScreenPosition().x << " for " << list.x;
  EXPECT_TRUE(window->chkFoldersOnly->GetValue());
  window->Close();
  EXPECT_FALSE(window->IsShown()) << "it waits for the farewell";
  ASSERT_TRUE(gone());
  // A screen that is gone must not keep the window.
  WriteSetting("FtpBrowseLeft", "90000");
  connect();
  const int left = window->GetPosition().x;
  EXPECT_LT(left, 9000);
}

TEST_F(BrowserFormTest, WorksBesideABackupRunAndEndsWithTheProgram) {
  testing::ScriptedFtpServer other;
  other.addFolder("/www");
  other.once("PASS", [](Session& s) { s.reply("530 Not yet."); });  // which must not hold up the run below
  server.addFile("/a.bin", "bytes");
  std::promise<void> seen;
  server.once("RETR /a.bin", [looked = seen.get_future().share()](Session& s) {
    looked.wait_for(kPatience);
    s.answerAsUsual();
  });
  openSite();
  fields->box("Port")->SetValue(std::to_string(other.port()));
  clickEvent(main->process->cmdStart);
  steps.when([&] { return server.count("RETR") == 1; }, [&] { connect(); })
      .when([&] { return window && listed("/"); },
            [&] {
              EXPECT_EQ(rows(), (Rows{"..", "www"}));
              seen.set_value();
            })
      .when([&] { return status() == "Completed" && !main->process->active(); },
            [&] {
              EXPECT_TRUE(form->browser()) << "the run's end took the browser with it";
              server.on("RETR /a.bin", [](Session& s) { s.waitForClient(); });
              clickEvent(main->process->cmdStart);
            })
      .when([&] { return server.count("RETR") == 2; }, [&] { main->ExitRoutine(); })
      .when([&] { return !main; })
      .take();
}

TEST_F(BrowserFormTest, KeepsTheConnectionAliveAndWhatIsBeingTyped) {
  std::promise<void> typed;
  server.addFolder("/www");
  browse();
  EXPECT_TRUE(window->tmrKeepAlive.IsRunning());
  EXPECT_EQ(window->tmrKeepAlive.GetInterval(), 50'000);
  const std::size_t before = server.count("PWD");
  window->tmrKeepAlive.Notify();
  ASSERT_TRUE(waitUntil([&] { return server.count("PWD") == before + 1 && !window->browser().busy(); }));

  server.once("LIST", [done = typed.get_future().share()](Session& s) {
    done.wait_for(kPatience);
    s.answerAsUsual();
  });
  const std::size_t lists = server.count("LIST");
  clickEvent(window->cmdRefresh);
  ASSERT_TRUE(waitUntil([&] { return server.count("LIST") == lists + 1; }));
  window->cmbRemoteDir->SetValue("/ww");
  typed.set_value();
  ASSERT_TRUE(waitUntil([&] { return !window->browser().busy(); }));
  EXPECT_EQ(window->cmbRemoteDir->GetValue(), "/ww");
  doubleClick(1);
  EXPECT_TRUE(waitUntil([&] { return listed("/www"); })) << "what is typed outlasts another choice";
}

TEST_F(BrowserFormTest, BelongsToTheProfileItWasOpenedFor) {
  profile.name = "another";
  profile.ID.clear();
  ASSERT_TRUE(SaveSiteProfile(profile, profilesFile()));
  browse();
  choose(kSaveItem);
  EXPECT_EQ(form->browser(), window.get());
  window->Move(form->wndTaskPanel->GetScreenRect().GetRight() + 50, 300);  // off the list
  ASSERT_TRUE(waitUntil(
      [&] { return !window->GetScreenRect().Intersects(form->wndTaskPanel->list().GetScreenRect()); }));
  clickProfile("another");
  ASSERT_TRUE(isOpen("another"));
  EXPECT_TRUE(gone());
  connect();
  choose(kAddItem);
  EXPECT_TRUE(gone());
  fields->box("name")->SetValue("third");
  for (const char* key : {"Host", "UserID", "Password"}) fields->box(key)->SetValue("x");
  fields->txtAddFolder->SetValue("/x");
  clickEvent(fields->cmdAddFolder);
  connect();
  choose(kSaveItem);
  EXPECT_TRUE(ProfileExists("third", profilesFile()));
  EXPECT_TRUE(form->browser()) << "to be saved is to stay the same profile";
  wxTEST_DIALOG(choose(kDeleteItem),
                ExpectBox("Warning", "Are you sure you want to delete this site profile: third",
                          wxYES_NO | wxNO_DEFAULT | wxICON_WARNING, wxID_YES));
  EXPECT_TRUE(gone());
  EXPECT_FALSE(fields->cmdConnect->IsEnabled());
}

/// In the place of the message box one that stands in a loop of its own until the test closes it.
class StandIn : public wxModalDialogHook {
 public:
  explicit StandIn(std::function<bool()> mayClose) : mayClose_(std::move(mayClose)) { Register(); }
  ~StandIn() override { Unregister(); }

 protected:
  int Enter(wxDialog* dialog) override {
    if (!dynamic_cast<wxMessageDialog*>(dialog)) return wxID_NONE;
    wxDialog box(dialog->GetParent(), wxID_ANY, "Quillmoor");
    wxTimer look;
    look.Bind(wxEVT_TIMER, [&](wxTimerEvent&) {
      if (box.IsModal() && mayClose_()) box.EndModal(wxID_OK);
    });
    look.Start(20);
    box.ShowModal();
    return wxID_OK;
  }

 private:
  std::function<bool()> mayClose_;
};

TEST_F(BrowserFormTest, OutlastsItsBoxWhenTheProgramEndsMeanwhile) {
  server.setListing("/", "this is no listing\r\n");
  openSite();
  int turns = 0;
  const StandIn box([&] {
    main->ExitRoutine();
    // Once the session has ended some turns more, in whose idle time goes what has been destroyed.
    return !window || (!window->browser().busy() && ++turns == 10);
  });
  connect();
  EXPECT_TRUE(waitUntil([&] { return !window; }));
  EXPECT_EQ(turns, 10) << "the window went before its box";
  EXPECT_TRUE(waitUntil([&] { return !main; }));
}

TEST_F(BrowserFormTest, ShowsAHugeFolderAtOnceAndTicksAllOfIt) {
  constexpr int kFolders = 20'000;
  std::string listing;
  for (int i = 0; i < kFolders; ++i)
    listing += "drwxr-xr-x 2 u g 4096 Jan  1 2020 folder " + std::to_string(i) + "\r\n";
  server.setListing("/", listing);
  browse();
  EXPECT_EQ(rows().size(), kFolders + 1u);
  // The quickest of three: other tests may come between.
  const auto turn = [&](const std::function<void()>& action) {
    auto best = std::chrono::steady_clock::duration::max();
    for (int tries = 0; tries < 3; ++tries) {
      clickEvent(window->cmdUnSelectAll);
      wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
      const auto begin = std::chrono::steady_clock::now();
      action();
      wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
      best = std::min(best, std::chrono::steady_clock::now() - begin);
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(best).count();
  };
  const auto ms = turn([&] { window->lvwRemote->showRows(); });
  const auto ticking = turn([&] { clickEvent(window->cmdSelectAll); });
  EXPECT_EQ(rows().back(), "x folder " + std::to_string(kFolders - 1));
  EXPECT_LT(ms, 1000);
  EXPECT_LT(ticking, 400) << "a tenth of that is usual, where nothing else runs";
}

}  // namespace
}  // namespace quillmoor
