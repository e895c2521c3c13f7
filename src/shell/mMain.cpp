// quillmoor: the program with its windows.
#include <wx/app.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include <exception>

#include "shell/frmMain.h"

namespace quillmoor {
namespace {

void tellError(const std::exception& error) {
  wxMessageBox(wxString::FromUTF8(error.what()), "Error", wxOK | wxICON_ERROR);
}

class QuillmoorApp : public wxApp {
 public:
  bool OnInit() override {
    // What the toolkit has to say must not stop an unattended program with a box.
    delete wxLog::SetActiveTarget(new wxLogStderr);
    SetAppName("quillmoor");
    SetAppDisplayName("Quillmoor");
    auto* const main = new frmMain;
    if (!main->Initialise()) return false;
    try {
      main->Load();
    } catch (const std::exception& error) {
      tellError(error);
      return false;
    }
    SetTopWindow(main);
    main->restore();
    return true;
  }

  bool OnExceptionInMainLoop() override {
    try {
      throw;
    } catch (const std::exception& error) {
      tellError(error);
      return true;
    }
  }
};

}  // namespace
}  // namespace quillmoor

wxIMPLEMENT_APP(quillmoor::QuillmoorApp);
