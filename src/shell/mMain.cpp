// quillmoor: the program with its windows.
#include <wx/app.h>
#include <wx/log.h>
#include <wx/msgdlg.h>
#include <wx/utils.h>

#include <exception>

#include "base/BusyFlag.h"
#include "controls/EventPump.h"
#include "shell/frmMain.h"

namespace quillmoor {
namespace {

void showError(const std::exception& error) {
  wxMessageBox(wxString::FromUTF8(error.what()), "Error", wxOK | wxICON_ERROR);
}

class QuillmoorApp : public wxApp {
 public:
  /// Turns off OpenGL, which this program does not use: looking for it would cost the toolkit a second and
  /// the memory of a compiler. The variable is unset again, so that programs started by a run do not inherit
  /// it.
  bool Initialize(int& count, wxChar** arguments) override {
    constexpr const char* kVariable = "GDK_GL";
    if (wxGetEnv(kVariable, nullptr)) return wxApp::Initialize(count, arguments);
    wxSetEnv(kVariable, "disable");
    const bool initialised = wxApp::Initialize(count, arguments);
    wxUnsetEnv(kVariable);
    return initialised;
  }

  bool OnInit() override {
    // Messages of the toolkit must not block an unattended program with a dialog.
    delete wxLog::SetActiveTarget(new wxLogStderr);
    SetAppName("quillmoor");
    SetAppDisplayName("Quillmoor");
    auto* const main = new frmMain;
    if (!main->Initialise()) return false;
    try {
      main->Load();
    } catch (const std::exception& error) {
      showError(error);
      return false;
    }
    SetTopWindow(main);
    main->restore();
    return true;
  }

  /// A failing timer would fail again at every tick, so its errors are logged instead of shown in a dialog.
  void CallEventHandler(wxEvtHandler* handler, wxEventFunctor& functor, wxEvent& event) const override {
    if (event.GetEventType() != wxEVT_TIMER) {
      wxApp::CallEventHandler(handler, functor, event);
      return;
    }
    try {
      wxApp::CallEventHandler(handler, functor, event);
    } catch (const std::exception& error) {
      wxLogError("Error: %s", wxString::FromUTF8(error.what()));
    }
  }

  bool OnExceptionInMainLoop() override {
    try {
      throw;
    } catch (const std::exception& error) {
      const BusyFlag showing(showingError_);
      if (showing.taken()) {
        showError(error);
      } else {
        wxLogError("Error: %s", wxString::FromUTF8(error.what()));
      }
    } catch (const ProgramEnding&) {
      // The code that requested the end handles it.
    }
    return true;
  }

 private:
  bool showingError_ = false;  // one dialog at a time
};

}  // namespace
}  // namespace quillmoor

wxIMPLEMENT_APP(quillmoor::QuillmoorApp);
