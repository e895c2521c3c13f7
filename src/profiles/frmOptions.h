// The backup options in force.
#pragma once

#include <wx/panel.h>

#include "controls/ReportControl.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

class frmOptions : public wxPanel {
 public:
  /// `settings` must outlive this.
  frmOptions(wxWindow* parent, const ApplicationSettings& settings);

  /// Shows the settings as they are now.
  void LoadOptions();

  ReportControl* lvwOptions;

 private:
  const ApplicationSettings& settings_;
};

}  // namespace quillmoor
