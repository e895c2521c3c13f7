// The site profiles: which there are, and the way out of the program.
#pragma once

#include <wx/button.h>
#include <wx/panel.h>
#include <wx/stattext.h>

#include <functional>
#include <optional>
#include <string>

#include "controls/ReportControl.h"
#include "controls/SeenTimer.h"

namespace quillmoor {

class frmSite : public wxPanel {
 public:
  frmSite(wxWindow* parent, std::string profilesFile);

  /// Reads the profile file and shows what is in it, or why it cannot be read. Happens by itself when the
  /// file changes.
  void LoadSitesInfo();

  /// The window is shown again.
  void wake() { tmrProfiles_.wake(); }
  void unload() { tmrProfiles_.Stop(); }

  /// The exit item was chosen and confirmed.
  std::function<void()> onExit;

  ReportControl* lvwProfiles;
  wxStaticText* lblProfiles;
  wxButton* cmdExit;

 private:
  void exitItem();
  void lookForChange();
  void showProfiles();

  const std::string profilesFile_;
  SeenTimer tmrProfiles_;
  std::optional<std::string> contents_;  // of the file, as it was read last
};

}  // namespace quillmoor
