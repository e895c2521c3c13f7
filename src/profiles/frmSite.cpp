#include "profiles/frmSite.h"

#include <wx/sizer.h>
#include <wx/splitter.h>

#include <chrono>
#include <exception>
#include <system_error>
#include <utility>
#include <vector>

#include "base/ErrorGuard.h"
#include "controls/BoundedFile.h"
#include "controls/Mnemonics.h"
#include "controls/TextWidth.h"
#include "platform/files/LocalPath.h"

namespace quillmoor {
namespace {

constexpr int kLookEvery = 1000;  // milliseconds
constexpr std::size_t kLargestFile = std::size_t{64} << 20;
// File times may have steps of two seconds.
constexpr std::chrono::seconds kRest{3};
constexpr int kTaskPanelWidth = 170;  // device-independent pixels, for the usual font

/// As kCommandItems, each with its mnemonic and its picture.
const std::vector<TaskPanel::Command> kCommands = {{kAddItem, "&Add", "tasks/Add"},
                                                   {kDeleteItem, "&Delete", "tasks/Delete"},
                                                   {kSaveItem, "&Save", "tasks/Save"},
                                                   {kExitItem, "E&xit", "tasks/Exit"}};

wxString fromUtf8(std::string_view text) {
  return wxString::FromUTF8(text.data(), text.size());
}

}  // namespace

frmSite::frmSite(wxWindow* parent, const ApplicationSettings& settings, std::string profilesFile)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "frmSite"),
      settings_(settings),
      profilesFile_(std::move(profilesFile)),
      prompts_(this),
      editor_(profilesFile_, prompts_) {
  auto* const halves = new wxSplitterWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                            wxSP_LIVE_UPDATE | wxSP_NO_XP_THEME);
  wndTaskPanel = new TaskPanel(halves, "wndTaskPanel");
  wndTaskPanel->addCommands(fromUtf8(kCommandGroup), kCommands);
  wndTaskPanel->addList(fromUtf8(kProfileGroup), "tasks/Profile");
  fields = new SiteFields(halves, editor_, settings_);
  halves->SetMinimumPaneSize(FromDIP(80));
  halves->SplitVertically(wndTaskPanel, fields, WidthForText(*this, kTaskPanelWidth));
  auto* const all = new wxBoxSizer(wxVERTICAL);
  all->Add(halves, wxSizerFlags(1).Expand());
  SetSizer(all);
  FollowMnemonics(*this);

  wndTaskPanel->onItem = [this](int id) { itemClicked(id); };
  fields->onConnect = [this] { connect(); };
  editor_.onExit = [this] {
    if (onExit) onExit();
  };
  lookForChange();
  tmrProfiles_.begin(this, kLookEvery, [this] {
    lookForChange();
    fields->showNotes();
  });
}

void frmSite::itemClicked(int id) {
  const bool wasStored = !editor_.currentName().empty();
  try {
    editor_.ItemClicked(id);
  } catch (const std::exception& error) {
    prompts_.ShowMessage(ErrorMessage(profilesFile_ + ": " + error.what()));
  }
  // The open browser belongs to the former profile.
  const bool opened = id != kSaveItem && id != kExitItem && id != kDeleteItem;
  const bool deleted = wasStored && editor_.currentName().empty();
  if (opened || deleted) closeBrowser();
  showProfiles();
  fields->show();
  fields->putFocusOn(editor_.focus);
}

/// Opens a new browser with every click: the fields may have changed.
void frmSite::connect() {
  const std::optional<SiteProfile> site = editor_.Connect();
  fields->putFocusOn(editor_.focus);
  if (!site) return;
  closeBrowser();
  browser_ = new frmFtpBrowse(wxGetTopLevelParent(this), *site, settings_,
                              {.addFolders =
                                   [this](const std::vector<std::string>& folders) {
                                     const std::size_t added = editor_.AddFolders(folders);
                                     fields->show();
                                     return added;
                                   },
                               .acceptCertificate =
                                   [this](const std::string& fingerprint) {
                                     editor_.shown.Certificate = fingerprint;
                                     fields->show();
                                   },
                               .noteTlsOffered =
                                   [this, site = *site] {
                                     editor_.NoteTlsOffered(site);
                                     fields->showNotes();
                                   }});
  browser_->Show();
}

void frmSite::closeBrowser() {
  if (browser_) browser_->unload();
  browser_ = nullptr;
}

void frmSite::unload() {
  tmrProfiles_.Stop();
  closeBrowser();
}

void frmSite::showProfiles() {
  std::vector<TaskPanel::Item> items;
  int current = 0;
  for (const TaskItem& item : editor_.profileItems) {
    items.push_back({item.id, item.caption});
    if (item.caption == editor_.currentName()) current = item.id;
  }
  wndTaskPanel->setItems(items);
  wndTaskPanel->markItem(current);
}

/// Compares the contents; the file is not read while its size and time show that nothing has changed. A
/// missing file is empty.
void frmSite::lookForChange() {
  std::error_code size, time;
  const std::filesystem::path file = LocalPath(profilesFile_);
  const Stamp now{std::filesystem::file_size(file, size), std::filesystem::last_write_time(file, time)};
  if (rested_ == now) return;
  const bool rested = !size && !time && decltype(now.time)::clock::now() - now.time > kRest;
  rested_ = rested ? std::optional(now) : std::nullopt;
  std::string contents;
  Guarded([&] { contents = ReadBoundedFile(profilesFile_, kLargestFile); });
  if (contents == contents_) return;
  contents_ = std::move(contents);
  Guarded([&] { editor_.LoadSitesInfo(); });
  showProfiles();
}

}  // namespace quillmoor
