#include "browser/frmFtpBrowse.h"

#include <wx/display.h>
#include <wx/sizer.h>
#include <wx/splitter.h>

#include <utility>

#include "base/BusyFlag.h"
#include "browser/BrowserPlacement.h"
#include "controls/AccessibleName.h"
#include "controls/Pictures.h"

namespace quillmoor {
namespace {

// Device-independent pixels.
constexpr int kGap = 6;
constexpr int kWidth = 720, kHeight = 500;
constexpr int kLogHeight = 110;
constexpr int kLowest = 360;   // keeps a few rows of the list visible
constexpr int kTitleBar = 60;  // enough of it to drag the window

wxButton* button(wxWindow* parent, const char* caption, const char* name) {
  return new wxButton(parent, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator,
                      name);
}

/// Whether enough of the window's upper edge is on a screen to drag it.
bool canBeReached(const wxRect& window, int grip) {
  for (unsigned i = 0; i < wxDisplay::GetCount(); ++i) {
    const wxRect seen = wxDisplay(i).GetClientArea().Intersect({window.x, window.y, window.width, grip});
    if (seen.width >= grip && seen.height >= grip / 2) return true;
  }
  return false;
}

}  // namespace

frmFtpBrowse::frmFtpBrowse(wxWindow* parent, const SiteProfile& site, const ApplicationSettings& settings,
                           RemoteBrowser::Editing editing)
    : wxFrame(parent, wxID_ANY, "Browse FTP Site", wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE | wxFRAME_FLOAT_ON_PARENT, "frmFtpBrowse"),
      prompts_(this) {
  const BrowserPlacement stored = LoadBrowserPlacement();
  browser_ = std::make_unique<RemoteBrowser>(site, settings, stored.foldersOnly,
                                             static_cast<BrowserView&>(*this), prompts_, std::move(editing));
  SetIcons(ApplicationIcon());
  layOut();
  chkFoldersOnly->SetValue(stored.foldersOnly);
  place(stored);
  connectControls();
  lvwRemote->SetFocus();
  Timer1.StartOnce(RemoteBrowser::kTimer1Ms);
  tmrKeepAlive.Start(RemoteBrowser::kKeepAliveMs);
}

/// The list and the log read from `browser_`, so they must go before it.
frmFtpBrowse::~frmFtpBrowse() {
  DestroyChildren();
}

void frmFtpBrowse::layOut() {
  const int gap = FromDIP(kGap);
  auto* const page = new wxPanel(this);  // needed for the Tab key
  auto* const all = new wxBoxSizer(wxVERTICAL);

  auto* const head = new wxBoxSizer(wxHORIZONTAL);
  cmbRemoteDir = new wxComboBox(page, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, nullptr,
                                wxCB_DROPDOWN | wxTE_PROCESS_ENTER, wxDefaultValidator, "cmbRemoteDir");
  SetAccessibleName(*cmbRemoteDir, "Folder of the server");
  cmdChDir = button(page, "Ch &Dir", "cmdChDir");
  cmdRefresh = button(page, "&Refresh", "cmdRefresh");
  head->Add(cmbRemoteDir, wxSizerFlags(1).CenterVertical());
  for (wxButton* const one : {cmdChDir, cmdRefresh})
    head->Add(one, wxSizerFlags().CenterVertical().Border(wxLEFT, gap));
  all->Add(head, wxSizerFlags().Expand().Border(wxALL, gap));

  auto* const halves = new wxSplitterWindow(page, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                            wxSP_LIVE_UPDATE | wxSP_NO_XP_THEME);
  auto* const upper = new wxPanel(halves);
  lvwRemote = new RemoteList(upper, *browser_);
  cmdSelectAll = button(upper, "&Select All", "cmdSelectAll");
  cmdUnSelectAll = button(upper, "&Unselect All", "cmdUnSelectAll");
  chkFoldersOnly = new wxCheckBox(upper, wxID_ANY, "Show &Folders Only", wxDefaultPosition, wxDefaultSize, 0,
                                  wxDefaultValidator, "chkFoldersOnly");
  cmdAdd = button(upper, "&Add Checked", "cmdAdd");
  cmdClose = button(upper, "&Close", "cmdClose");
  cmdAdd->SetToolTip("Adds the ticked folders to the profile");
  auto* const foot = new wxBoxSizer(wxHORIZONTAL);
  foot->Add(cmdSelectAll, wxSizerFlags().CenterVertical());
  foot->Add(cmdUnSelectAll, wxSizerFlags().CenterVertical().Border(wxLEFT, gap));
  foot->Add(chkFoldersOnly, wxSizerFlags().CenterVertical().Border(wxLEFT, 2 * gap));
  foot->AddStretchSpacer();
  foot->Add(cmdAdd, wxSizerFlags().CenterVertical().Border(wxLEFT, 2 * gap));
  foot->Add(cmdClose, wxSizerFlags().CenterVertical().Border(wxLEFT, gap));
  auto* const list = new wxBoxSizer(wxVERTICAL);
  list->Add(lvwRemote, wxSizerFlags(1).Expand());
  list->Add(foot, wxSizerFlags().Expand().Border(wxTOP | wxBOTTOM, gap));
  upper->SetSizer(list);
  txtLog = new LogView(halves, browser_->log(), "txtLog", "Log of the connection");
  halves->SetMinimumPaneSize(FromDIP(50));
  halves->SetSashGravity(1);
  halves->SplitHorizontally(upper, txtLog, -FromDIP(kLogHeight));
  all->Add(halves, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
  page->SetSizer(all);

  auto* const frame = new wxBoxSizer(wxVERTICAL);
  frame->Add(page, wxSizerFlags(1).Expand());
  SetSizer(frame);
  SetMinSize(wxSize(foot->CalcMin().x + 4 * gap, FromDIP(kLowest)));
}

void frmFtpBrowse::connectControls() {
  const auto on = [](wxWindow* control, const auto& event, auto action) {
    control->Bind(event, [action](wxCommandEvent&) { action(); });
  };
  on(cmdChDir, wxEVT_BUTTON, [this] {
    changeFolder();
    lvwRemote->SetFocus();
  });
  on(cmbRemoteDir, wxEVT_COMBOBOX, [this] {
    if (!listEscaped_) changeFolder();
  });
  on(cmbRemoteDir, wxEVT_TEXT_ENTER, [this] { changeFolder(); });
  on(cmdRefresh, wxEVT_BUTTON, [this] { browser_->refresh(); });
  on(cmdSelectAll, wxEVT_BUTTON, [this] { browser_->selectAll(); });
  on(cmdUnSelectAll, wxEVT_BUTTON, [this] { browser_->unselectAll(); });
  on(chkFoldersOnly, wxEVT_CHECKBOX, [this] { browser_->setFoldersOnly(chkFoldersOnly->GetValue()); });
  on(cmdAdd, wxEVT_BUTTON, [this] { browser_->addChecked(); });
  on(cmdClose, wxEVT_BUTTON, [this] { Close(); });
  cmbRemoteDir->Bind(wxEVT_COMBOBOX_DROPDOWN, [this](wxCommandEvent& event) {
    listDropped_ = true;
    listEscaped_ = false;
    beforeList_ = cmbRemoteDir->GetValue();
    event.Skip();
  });
  cmbRemoteDir->Bind(wxEVT_KEY_DOWN, [this](wxKeyEvent& event) {
    listEscaped_ = listDropped_ && event.GetKeyCode() == WXK_ESCAPE;
    event.Skip();
  });
  cmbRemoteDir->Bind(wxEVT_COMBOBOX_CLOSEUP, [this](wxCommandEvent& event) {
    listDropped_ = false;
    // Windows treats the item reached by the arrow keys as chosen.
    if (std::exchange(listEscaped_, false)) cmbRemoteDir->SetValue(beforeList_);
    event.Skip();
  });
  lvwRemote->onActivated = [this](std::size_t row) {
    takeTypedFolder();
    browser_->activate(row);
  };
  lvwRemote->onChecked = [this](std::size_t row, bool checked) { browser_->setChecked(row, checked); };
  Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) { unload(); });
  Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
    if (event.GetKeyCode() == WXK_ESCAPE && !listDropped_) return unload();  // else it closes the list
    event.Skip();
  });
  Timer1.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { browser_->connect(); });
  tmrKeepAlive.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { browser_->keepAlive(); });
  tmrEvents_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    // Processing events may show a message box. A window closed meanwhile is destroyed only after the box.
    const BusyFlag taking(takingEvents_);
    browser_->takeEvents();
    if (!closed_ || !taking.taken()) return;
    tmrEvents_.Stop();
    Destroy();
  });
}

/// Text typed into the box while the server is slow is kept until the user starts another operation.
void frmFtpBrowse::takeTypedFolder() {
  if (browser_->takesListing()) shownFolder_ = cmbRemoteDir->GetValue();
}

void frmFtpBrowse::changeFolder() {
  if (browser_->takesFolder()) shownFolder_ = cmbRemoteDir->GetValue();
  browser_->changeFolder(cmbRemoteDir->GetValue().utf8_string());
}

/// Stored in device-independent pixels, as the size of the client area: with the frame's size GTK would wait
/// for the frame before showing the window, and choose its position.
void frmFtpBrowse::place(const BrowserPlacement& placement) {
  if (placement.window) {
    const auto& stored = *placement.window;
    const wxRect window(FromDIP(wxPoint(wxRound(stored.left), wxRound(stored.top))),
                        FromDIP(wxSize(wxRound(stored.width), wxRound(stored.height))));
    if (canBeReached(window, FromDIP(kTitleBar))) {
      SetClientSize(window.GetSize());
      return Move(window.GetPosition());
    }
  }
  SetClientSize(FromDIP(wxSize(kWidth, kHeight)));
  CentreOnParent();
}

BrowserPlacement frmFtpBrowse::placement() const {
  BrowserPlacement placement;
  if (IsIconized() || IsMaximized()) return placement;
  const wxPoint corner = ToDIP(GetPosition());
  const wxSize size = ToDIP(GetClientSize());
  placement.window = BrowserPlacement::Rectangle{static_cast<double>(corner.x), static_cast<double>(corner.y),
                                                 static_cast<double>(size.x), static_cast<double>(size.y)};
  return placement;
}

void frmFtpBrowse::unload() {
  if (std::exchange(closing_, true)) return;
  Timer1.Stop();
  tmrKeepAlive.Stop();
  const BrowserPlacement now = placement();
  Hide();
  browser_->close(now);
  tmrEvents_.Start(RemoteBrowser::kEventsEveryMs);
}

void frmFtpBrowse::showFolder(const std::string& path, bool isNew) {
  const wxString shown = wxString::FromUTF8(path);
  if (isNew) cmbRemoteDir->Append(shown);
  if (browser_->listingWaits()) return;  // keep the folder that was chosen meanwhile
  if (cmbRemoteDir->GetValue() == std::exchange(shownFolder_, shown)) cmbRemoteDir->SetValue(shown);
}

void frmFtpBrowse::showBusy(bool busy) {
  SetCursor(busy ? wxCursor(wxCURSOR_ARROWWAIT) : wxNullCursor);
  if (busy) {
    tmrEvents_.Start(RemoteBrowser::kEventsEveryMs);
  } else if (!closing_) {
    tmrEvents_.Stop();
  }
}

}  // namespace quillmoor
