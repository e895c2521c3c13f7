// The site profile form: the task panel with the commands and the stored profiles, and the profile's fields.
#pragma once

#include <wx/panel.h>
#include <wx/weakref.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "browser/frmFtpBrowse.h"
#include "controls/SeenTimer.h"
#include "controls/TaskPanel.h"
#include "controls/WindowPrompts.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/SiteFields.h"
#include "profiles/SiteProfileEditor.h"

namespace quillmoor {

class frmSite : public wxPanel {
 public:
  /// The remote browser and the notes below the fields use `settings`, which must outlive the form.
  frmSite(wxWindow* parent, const ApplicationSettings& settings, std::string profilesFile);

  /// The window is shown again.
  void wake() { tmrProfiles_.wake(); }
  /// Form unload: also closes the remote browser.
  void unload();

  /// Called when the exit item was chosen and confirmed.
  std::function<void()> onExit;

  TaskPanel* wndTaskPanel;
  SiteFields* fields;
  /// The remote browser while it is open, nullptr otherwise.
  frmFtpBrowse* browser() const { return browser_.get(); }

 private:
  void connect();
  void closeBrowser();
  void itemClicked(int id);
  void showProfiles();
  void lookForChange();

  /// Size and time of the file.
  struct Stamp {
    std::uintmax_t size = 0;
    std::filesystem::file_time_type time;
    bool operator==(const Stamp&) const = default;
  };

  const ApplicationSettings& settings_;
  const std::string profilesFile_;
  WindowPrompts prompts_;
  SiteProfileEditor editor_;
  wxWeakRef<frmFtpBrowse> browser_;
  SeenTimer tmrProfiles_;
  std::optional<std::string> contents_;  // of the file, as it was read last
  std::optional<Stamp> rested_;          // at that time, if the file had not changed for a while
};

}  // namespace quillmoor
