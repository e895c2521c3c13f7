#include "profiles/frmSite.h"

#include <wx/msgdlg.h>
#include <wx/sizer.h>

#include <exception>
#include <utility>

#include "controls/BoundedFile.h"
#include "engine/ErrorGuard.h"
#include "profiles/SiteProfileStore.h"

namespace quillmoor {
namespace {

constexpr int kLookEvery = 1000;  // milliseconds
constexpr std::size_t kLargestFile = std::size_t{4} << 20;

enum Column : std::size_t { kName, kStatus, kHost, kFolders, kSaveTo };
const std::vector<ReportControl::Column> kColumns = {
    {"Profile", 140}, {"Status", 80}, {"Host", 150}, {"Folders", 180}, {"Saved to", 180}};

std::string joined(const std::vector<std::string>& folders) {
  std::string text;
  for (const std::string& folder : folders) text += (text.empty() ? "" : ", ") + folder;
  return text;
}

}  // namespace

frmSite::frmSite(wxWindow* parent, std::string profilesFile)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "frmSite"),
      profilesFile_(std::move(profilesFile)) {
  const int gap = FromDIP(6);
  auto* const all = new wxBoxSizer(wxVERTICAL);
  lblProfiles = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE);
  lvwProfiles = new ReportControl(this, kColumns, "Current Profiles");
  cmdExit = new wxButton(this, wxID_ANY, "E&xit", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator,
                         "cmdExit");
  all->Add(lblProfiles, wxSizerFlags().Expand().Border(wxALL, gap));
  all->Add(lvwProfiles, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT, gap));
  all->Add(cmdExit, wxSizerFlags().Right().Border(wxALL, gap));
  SetSizer(all);
  cmdExit->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { exitItem(); });
  lookForChange();
  tmrProfiles_.begin(this, kLookEvery, [this] { lookForChange(); });
}

/// By what the file holds: its time may have no finer steps than a second. A missing file holds nothing.
void frmSite::lookForChange() {
  std::string contents;
  Guarded([&] { contents = ReadBoundedFile(profilesFile_, kLargestFile); });
  if (contents == contents_) return;
  contents_ = std::move(contents);
  LoadSitesInfo();
}

void frmSite::LoadSitesInfo() {
  try {
    showProfiles();
  } catch (const std::exception& error) {
    lvwProfiles->populate();
    lblProfiles->SetLabelText(wxString::FromUTF8(profilesFile_ + " cannot be read: " + error.what()));
  }
}

void frmSite::showProfiles() {
  lvwProfiles->clear();
  const std::vector<std::string> names = quillmoor::LoadSitesInfo(profilesFile_);
  for (const std::string& name : names) {
    const SiteProfile profile = LoadSiteProfile(name, profilesFile_);
    const std::size_t row = lvwProfiles->addRow();
    lvwProfiles->setItem(row, kName, name);
    lvwProfiles->setItem(row, kStatus, profile.Status == 1 ? "Enabled" : "Disabled");
    lvwProfiles->setItem(row, kHost, profile.Host);
    lvwProfiles->setItem(row, kFolders, joined(profile.Folders));
    lvwProfiles->setItem(row, kSaveTo, profile.SaveTo);
  }
  lvwProfiles->populate();
  const wxString file = wxString::FromUTF8(profilesFile_);
  lblProfiles->SetLabelText(
      names.empty()
          ? "There is no profile yet in " + file
          : wxString::Format("%zu %s in ", names.size(), names.size() == 1 ? "profile" : "profiles") + file);
}

void frmSite::exitItem() {
  wxMessageDialog box(this, "Are you sure you want to exit the application?.", "Quillmoor",
                      wxYES_NO | wxCANCEL | wxCANCEL_DEFAULT | wxICON_WARNING);
  if (box.ShowModal() == wxID_YES && onExit) onExit();
}

}  // namespace quillmoor
