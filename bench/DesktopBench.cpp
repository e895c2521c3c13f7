// DesktopBench PROFILES_INI   runs the backup of that file in the program's window and prints how long it
// took and how long the longest of the events waited that were posted to the window every 5 ms meanwhile, as
// clicks are.
#include <wx/app.h>
#include <wx/evtloop.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "shell/PaneTable.h"
#include "shell/frmMain.h"

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

class BenchApp : public wxApp {
 public:
  bool OnInit() override {
    auto* const main = new quillmoor::frmMain;
    main->profilesFile = argv[1].utf8_string();
    main->network = [](std::uint32_t& kinds) {
      kinds = quillmoor::kNetworkLan;
      return true;
    };
    main->Load();
    main->tmrHide.Stop();
    main->restore();
    main->panes->activate(quillmoor::kBackupPane);
    main->CallAfter([this, main] { measure(*main); });
    return true;
  }

 private:
  void measure(quillmoor::frmMain& main) {
    for (int i = 0; i < 200; ++i) {  // until the window is drawn
      wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    hand_ = std::thread([this, &main] {
      while (!over_) {
        const auto posted = Clock::now();
        main.CallAfter([this, &main, posted] {
          if (begin_ == Clock::time_point() && main.process->active()) begin_ = posted;
          waited_.push_back(Milliseconds(Clock::now() - posted).count());
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
      }
    });
    main.process->onFinished = [this, &main](const auto& outcome) {
      const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
      over_ = true;
      hand_.join();
      std::sort(waited_.begin(), waited_.end());
      const auto at = [this](double share) {
        return waited_.at(static_cast<std::size_t>(share * static_cast<double>(waited_.size() - 1)));
      };
      std::printf(
          "%.0f files in %.3f s; %zu events waited %.1f ms (median), %.1f ms (99 %%), %.1f ms (longest)\n",
          outcome.files, seconds, waited_.size(), at(0.5), at(0.99), at(1));
      main.ExitRoutine();
    };
    main.process->startBackup();
  }

  std::atomic<bool> over_ = false;
  std::vector<double> waited_;
  std::thread hand_;
  Clock::time_point begin_;
};

}  // namespace

wxIMPLEMENT_APP_CONSOLE(BenchApp);
