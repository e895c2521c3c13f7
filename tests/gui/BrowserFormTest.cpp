// The window "Browse FTP Site" as it is opened from a profile: walked, ticked, closed in the middle of
// an operation.
#include <wx/modalhook.h>

#include <chrono>
#include <future>

#include "SiteFormFixture.h"

namespace quillmoor {
namespace {

using Session = testing::ScriptedFtpServer::Session;

using Rows = std::vector<std::string>;

class BrowserFormTest : public SiteFormTest {
 protected:
  /// Opens the browser for the profile "site".
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
  bool shows(const wxString& path, const Rows& wanted) {
    return waitUntil([&] { return listed(path) && rows() == wanted; });
  }
  Rows rows() const {
    Rows all;
    const RemoteBrowser& browser = window->browser();
    for (std::size_t row = 0; row < browser.rowCount(); ++row)
      all.push_back((browser.checked(row) ? "x " : "") + browser.cell(row, 0));
    return all;
  }
  void moveTo(const std::function<wxRect()>& place) {
    EXPECT_TRUE(waitUntil([&] { return !place().IsEmpty(); }));
    const wxRect at = place();
    hand.MouseMove(at.x + std::min(at.width / 2, 40), at.y + at.height / 2);
  }
  void clickBox(std::size_t row) {
    moveTo([&] { return window->lvwRemote->boxPlace(row); });
    hand.MouseClick();
  }
  void doubleClick(std::size_t row) {
    moveTo([&] { return window->lvwRemote->namePlace(row); });
    hand.MouseDblClick();
  }
  bool gone() {
    return waitUntil([&] { return !form->browser(); });
  }

  wxWeakRef<frmFtpBrowse> window;
};

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
  EXPECT_TRUE(waitUntil([&] { return folders() == Rows{"/", "/www"}; }));
  EXPECT_EQ(rows(), (Rows{"..", "x www", "readme.txt"})) << "a file keeps a tick";

  const Rows www = {"..", "images", "index.html"};
  doubleClick(1);
  ASSERT_TRUE(shows("/www", www));
  clickEvent(window->cmdSelectAll);
  EXPECT_EQ(rows(), (Rows{"x ..", "x images", "index.html"}));
  clickEvent(window->cmdUnSelectAll);
  EXPECT_EQ(rows(), www);
  window->cmbRemoteDir->SetValue("/");
  clickEvent(window->cmdChDir);
  ASSERT_TRUE(shows("/", {"..", "www", "readme.txt"}));
  EXPECT_TRUE(waitUntil([&] { return hasFocus(window->lvwRemote); }));
  for (const int key : {WXK_DOWN, WXK_SPACE}) hand.Char(key);
  EXPECT_TRUE(waitUntil([&] { return rows()[1] == "x www"; })) << "the space bar does not tick";
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(shows("/www", www));
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
  EXPECT_TRUE(window && window->IsShown() && listed("/www"));
  EXPECT_EQ(server.count("LIST"), lists) << "what the arrow keys had come to is no choice";
  hand.Char(WXK_ESCAPE);
  EXPECT_TRUE(gone());
}

TEST_F(BrowserFormTest, ComesBackWhereItStoodAndAsItWas) {
  browse();
  window->SetSize(wxRect(window->FromDIP(wxPoint(150, 120)), window->FromDIP(wxSize(640, 420))));
  ASSERT_TRUE(waitUntil([&] { return window->GetSize() == window->FromDIP(wxSize(640, 420)); }));
  const wxRect stood = window->GetRect();
  tick(window->chkFoldersOnly, true);
  window->Close();
  EXPECT_FALSE(window->IsShown()) << "hidden only once the server has answered QUIT";
  ASSERT_TRUE(gone());
  connect();
  EXPECT_TRUE(waitUntil([&] { return window->GetRect() == stood; })) << window->GetRect().x;
  ASSERT_TRUE(waitUntil([&] { return window->IsActive() && listed("/"); }));
  EXPECT_TRUE(window->chkFoldersOnly->GetValue());
  window->Close();
  ASSERT_TRUE(gone());
  WriteSetting("FtpBrowseLeft", "90000");  // on a screen that is gone
  connect();
  EXPECT_LT(window->GetPosition().x, 9000);
}

TEST_F(BrowserFormTest, KeepsTheConnectionAliveAndWhatIsBeingTyped) {
  server.addFolder("/www");
  browse();
  EXPECT_EQ(window->tmrKeepAlive.GetInterval(), 50'000);
  const std::size_t before = server.count("PWD");
  window->tmrKeepAlive.Notify();
  ASSERT_TRUE(waitUntil([&] { return server.count("PWD") == before + 1 && !window->browser().busy(); }));

  std::promise<void> typed;
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
  EXPECT_TRUE(waitUntil([&] { return listed("/www"); })) << "the typed text has stayed";
}

TEST_F(BrowserFormTest, BelongsToTheProfileItWasOpenedFor) {
  browse();
  choose(kSaveItem);
  EXPECT_EQ(form->browser(), window.get()) << "a saved profile is still the same";
  window->Move(form->wndTaskPanel->GetScreenRect().GetRight() + 50, 300);  // it would cover the list
  ASSERT_TRUE(waitUntil(
      [&] { return !window->GetScreenRect().Intersects(form->wndTaskPanel->list().GetScreenRect()); }));
  clickProfile("site");
  EXPECT_TRUE(gone()) << "not closed by opening a profile";
  connect();
  choose(kAddItem);
  EXPECT_TRUE(gone()) << "not closed by a new profile";
  for (const char* key : {"name", "Host", "UserID", "Password"}) fields->box(key)->SetValue("third");
  fields->txtAddFolder->SetValue("/x");
  clickEvent(fields->cmdAddFolder);
  connect();
  choose(kSaveItem);
  EXPECT_TRUE(form->browser()) << "a new profile that is saved is still the same";
  wxTEST_DIALOG(choose(kDeleteItem), wxExpectModal<wxMessageDialog>(wxID_YES));
  EXPECT_TRUE(gone()) << "not closed by deleting the profile";
}

/// Replaces a message box by a dialog that a test can close.
struct StandIn : wxModalDialogHook {
  StandIn() { Register(); }
  ~StandIn() override { Unregister(); }
  int Enter(wxDialog* dialog) override {
    if (!dynamic_cast<wxMessageDialog*>(dialog)) return wxID_NONE;
    wxDialog stand(dialog->GetParent(), wxID_ANY, "Quillmoor");
    box = &stand;
    return stand.ShowModal();
  }
  wxDialog* box = nullptr;
};

TEST_F(BrowserFormTest, OutlastsItsBoxWhenTheProgramEndsMeanwhile) {
  server.setListing("/", "this is no listing\r\n");
  openSite();
  StandIn stand;
  int turns = 0;
  connect();
  steps
      .when([&] { return stand.box && stand.box->IsModal(); }, [&] { main->ExitRoutine(); })
      // Some turns after the end of the session: what is to be destroyed goes when the program is idle.
      .when([&] { return !window || (!window->browser().busy() && ++turns == 10); },
            [&] {
              EXPECT_TRUE(window) << "the window went before its box";
              stand.box->EndModal(wxID_OK);
            })
      .when([&] { return !window && !main; })
      .take();
}

TEST_F(BrowserFormTest, ShowsAndTicksAHugeFolderAtOnceAndBeginsTheNextAtItsTop) {
  constexpr int kFolders = 20'000;
  std::string listing;
  for (int i = 1; i <= kFolders; ++i)
    listing += "drwxr-xr-x 2 u g 4096 Jan  1 2020 f" + std::to_string(i) + "\r\n";
  server.setListing("/", listing);
  for (int i = 0; i < 100; ++i) server.addFolder("/f20000/" + std::to_string(i));
  browse();
  EXPECT_EQ(rows().size(), kFolders + 1u);
  const auto begin = std::chrono::steady_clock::now();
  window->lvwRemote->showRows();
  clickEvent(window->cmdSelectAll);
  wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)) << "a tenth is usual";
  EXPECT_EQ(rows().back(), "x f20000");
  const auto inView = [&](std::size_t row) {
    return waitUntil([&] { return !window->lvwRemote->namePlace(row).IsEmpty(); });
  };
  focus(window->lvwRemote);
  hand.Char(WXK_END);
  ASSERT_TRUE(inView(kFolders));
  hand.Char(WXK_RETURN);
  ASSERT_TRUE(waitUntil([&] { return listed("/f20000"); }));
  EXPECT_TRUE(inView(0)) << "it is still scrolled";
}

}  // namespace
}  // namespace quillmoor
