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

void tellError(const std::exception& error) {
  wxMessageBox(wxString::FromUTF8(error.what()), "Error", wxOK | wxICON_ERROR);
}

class QuillmoorApp : public wxApp {
 public:
  /// Nothing here is drawn by a graphics card. The toolkit would look for one all the same, and where it is
  /// the first program to do so it waits for a second and keeps a compiler in memory. Not for programs that a
  /// run starts.
  bool Initialize(int& count, wxChar** arguments) override {
    constexpr const char* kVariable = "GDK_GL";
    if (wxGetEnv(kVariable, nullptr)) return wxApp::Initialize(count, arguments);
    wxSetEnv(kVariable, "disable");
    const bool initialised = wxApp::Initialize(count, arguments);
    wxUnsetEnv(kVariable);
    return initialised;
  }

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

  /// A timer that fails will fail again at its next tick: it is told of where nobody has to answer.
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
      const BusyFlag telling(telling_);
      if (telling.taken()) {
        tellError(error);
      } else {
        wxLogError("Error: %s", wxString::FromUTF8(error.what()));
      }
    } catch (const ProgramEnding&) {
      // Whoever asked for the end sees to it.
    }
    return true;
  }

 private:
  bool telling_ = false;  // one box at a time
};

}  // namespace
}  // namespace quillmoor

wxIMPLEMENT_APP(quillmoor::QuillmoorApp);
