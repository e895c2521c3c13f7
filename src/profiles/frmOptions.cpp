#include "profiles/frmOptions.h"

#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "profiles/JoinedList.h"

namespace quillmoor {
namespace {

const std::vector<ReportControl::Column> kColumns = {{"Option", 240}, {"In force", 420}};

std::string yesNo(std::int32_t flag) {
  return flag == 1 ? "Yes" : "No";
}

std::string orNone(const std::string& text) {
  return text.empty() ? "None" : text;
}

std::string listOrNone(std::string folders) {
  std::replace(folders.begin(), folders.end(), kListSeparator, ' ');
  return orNone(folders);
}

std::vector<std::pair<std::string, std::string>> optionsOf(const ApplicationSettings& s) {
  return {{"Files fetched",
           s.BackupMode == 1 ? "All of them" : "Those that are missing or listed with an earlier date"},
          {"A folder of its own for every run", s.UniqueBackup != 0 ? "Yes" : "No"},
          {"Archive after the download", yesNo(s.CreateZip)},
          {"Archive split into volumes",
           s.SplitZip == 1 ? "Yes, of " + std::to_string(s.ZipSpanSize) + " KB" : "No"},
          {"Archive extracts itself", yesNo(s.ZipSelfExtract)},
          {"Archive has a password", s.ZipPassword.empty() ? "No" : "Yes"},
          {"Archive copied to", listOrNone(s.ZipCopies)},
          {"Program started before a run", orNone(s.RunBefore)},
          {"Program started after a run", orNone(s.RunAfter)},
          {"Address called before a run", orNone(s.ConnectBefore)},
          {"Address called after a run", orNone(s.ConnectAfter)}};
}

}  // namespace

frmOptions::frmOptions(wxWindow* parent, const ApplicationSettings& settings)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "frmOptions"),
      settings_(settings) {
  const int gap = FromDIP(6);
  auto* const all = new wxBoxSizer(wxVERTICAL);
  all->Add(new wxStaticText(this, wxID_ANY, "What every backup run does:"),
           wxSizerFlags().Border(wxALL, gap));
  lvwOptions = new ReportControl(this, kColumns, "Backup options");
  all->Add(lvwOptions, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
  SetSizer(all);
  LoadOptions();
}

void frmOptions::LoadOptions() {
  lvwOptions->clear();
  for (const auto& [option, value] : optionsOf(settings_)) {
    const std::size_t row = lvwOptions->addRow();
    lvwOptions->setItem(row, 0, option);
    lvwOptions->setItem(row, 1, value);
  }
  lvwOptions->populate();
}

}  // namespace quillmoor
