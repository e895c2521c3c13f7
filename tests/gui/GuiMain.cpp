// Runs the tests inside a program with windows and an event loop.
#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/init.h>
#include <wx/log.h>

namespace {

class TestApp : public wxApp {
 public:
  bool OnInit() override {
    delete wxLog::SetActiveTarget(new wxLogStderr);
    SetAppName("quillmoor");
    SetExitOnFrameDelete(false);
    return true;
  }
  int OnRun() override {
    wxEventLoop loop;
    const wxEventLoopActivator active(&loop);
    return RUN_ALL_TESTS();
  }
  // A failed check of the toolkit fails the test instead of showing a box.
  void OnAssertFailure(const wxChar* file, int line, const wxChar*, const wxChar* condition,
                       const wxChar*) override {
    ADD_FAILURE() << wxString(file) << ":" << line << ": " << wxString(condition);
  }
};

}  // namespace

wxIMPLEMENT_APP_NO_MAIN(TestApp);

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  return wxEntry(argc, argv);
}
