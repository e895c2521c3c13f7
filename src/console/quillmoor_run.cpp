// quillmoor-run: runs a backup from the command line, for a machine without a screen.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "connectivity/DialUp.h"
#include "connectivity/modProcessPriority.h"
#include "console/ConsoleDisplay.h"
#include "engine/MachineServices.h"
#include "engine/RunController.h"
#include "platform/files/LocalPath.h"
#include "platform/system/LocalTime.h"
#include "platform/system/ProgramArguments.h"
#include "platform/system/Terminal.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/SiteProfileStore.h"

namespace quillmoor {
namespace {

enum ExitStatus { kAllCompleted = 0, kNotAllCompleted = 1, kCouldNotStart = 2 };

constexpr const char* kHelp =
    "Usage: quillmoor-run [OPTION]\n"
    "Backs up every enabled site profile of Profiles.ini in this program's folder, once, now.\n"
    "\n"
    "  --assume-network  do not check whether a network is up (for sites on this machine)\n"
    "  --help            show this help and exit\n"
    "  --version         show the version and exit\n"
    "\n"
    "Ctrl-C stops the run cleanly, a second Ctrl-C ends the program at once. While the run waits for "
    "a\n"
    "network, with AutoDial 0, only the second one ends it.\n"
    "Exit status: 0 when every enabled profile was completed without failures, 1 when one was not or "
    "a folder, a file, an archive or a copy of one failed, 2 when the run could not start.\n";

struct Options {
  bool assumeNetwork = false;
};

/// Standard output, flushed at most once per pump call.
class Output {
 public:
  void write(std::string_view bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    written_ = true;
  }
  void flush() {
    if (written_) std::fflush(stdout);
    written_ = false;
  }

 private:
  bool written_ = false;
};

/// Turns stop signals into one confirmed Stop of the run.
class StopRelay {
 public:
  void attach(RunController& controller) { controller_ = &controller; }
  void check() {
    if (stopSignals() == 0 || done_ || !controller_) return;
    done_ = true;
    controller_->Stop();
  }

 private:
  RunController* controller_ = nullptr;
  bool done_ = false;
};

/// A run that dials waits until a connection is up: warns beforehand when there will be none.
void warnIfNothingToDial(const std::string& entry, DialUp& dialUp) {
  const auto entries = dialUp.Entries();
  if (std::find(entries.begin(), entries.end(), entry) != entries.end()) return;
  const std::string what = entry.empty() ? "no dial-up entry is chosen (AutoDialUpConnection)"
                                         : "this machine has no dial-up entry \"" + entry + "\"";
  std::fprintf(
      stderr,
      "quillmoor-run: the setting AutoDial is 1, but %s: the run waits until a dial-up connection is "
      "up.\n"
      "The entries: quillmoor-config dialup list. On a machine with a network of its own: "
      "quillmoor-config setting set AutoDial 0\n",
      what.c_str());
}

/// Prints the failures; returns true when everything was backed up.
bool reportFailures(const std::vector<ProfileResult>& results) {
  bool whole = true;
  for (const ProfileResult& result : results) {
    whole = whole && result.completed && !result.failed();
    for (const std::string& line : FailureLines(result))
      std::fprintf(stderr, "quillmoor-run: %s\n", line.c_str());
  }
  return whole;
}

int run(const Options& options) {
  const std::string profilesFile = ProfilesFilePath();
  if (!std::ifstream(LocalPath(profilesFile))) {
    std::fprintf(stderr, "quillmoor-run: cannot read the site profiles: %s\n", profilesFile.c_str());
    return kCouldNotStart;
  }
  std::vector<std::string> notes;
  ApplicationSettings settings = LoadApplicationSettings(&notes);
  for (const std::string& note : notes) std::fprintf(stderr, "quillmoor-run: %s\n", note.c_str());
  // Normal, the default, keeps the priority class in which the program was started (by nice, for example).
  if (settings.ProcessPriority != modProcessPriority::kNormalClass) {
    modProcessPriority::SetPriority(0, 0, settings.ProcessPriority);
  }

  catchStopSignals();
  Output output;
  ConsoleDisplay display(
      {[&](std::string_view bytes) { output.write(bytes); }, prepareTerminal(), terminalWidth, TickCountMs});
  StopRelay stopRelay;
  MachineServices services(settings, profilesFile, [&] {
    stopRelay.check();
    display.refresh();
    output.flush();
  });
  if (options.assumeNetwork) {
    services.network = [](std::uint32_t& flags) {
      flags = 1;
      return true;
    };
  }
  if (settings.AutoDial == 1) warnIfNothingToDial(settings.AutoDialUpConnection, services.dialUp());
  RunController controller(services.forRun(display));
  stopRelay.attach(controller);

  const auto results = controller.RunBackup();
  display.finish();
  if (controller.refused()) {
    output.flush();
    return kCouldNotStart;
  }
  output.write("\n" + display.reportTable(results));
  output.flush();
  return reportFailures(results) && stopSignals() == 0 ? kAllCompleted : kNotAllCompleted;
}

int main(const std::vector<std::string>& arguments) {
  prepareTerminal();  // also for messages before the run
  Options options;
  for (const std::string& argument : arguments) {
    if (argument == "--help") {
      std::fputs(kHelp, stdout);
      return kAllCompleted;
    }
    if (argument == "--version") {
      std::puts("quillmoor-run " QUILLMOOR_VERSION);
      return kAllCompleted;
    }
    if (argument == "--assume-network") {
      options.assumeNetwork = true;
      continue;
    }
    std::fprintf(stderr, "quillmoor-run: unknown option \"%s\". Try quillmoor-run --help.\n",
                 argument.c_str());
    return kCouldNotStart;
  }
  try {
    return run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quillmoor-run: %s\n", error.what());
    return kCouldNotStart;
  }
}

}  // namespace
}  // namespace quillmoor

int main(int argc, char** argv) {
  return quillmoor::main(quillmoor::ProgramArguments(argc, argv));
}
