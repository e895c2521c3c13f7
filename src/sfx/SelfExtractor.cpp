// The program at the start of a self-extracting archive: unpacks what follows it.
//
// Exit status: 0 when everything was unpacked (even if the disk did not accept every time and permission), 1
// when something was skipped, 2 for invalid arguments, 3 when the archive is damaged or incomplete, 4 for a
// wrong password, 5 when a file cannot be written.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/SafeName.h"
#include "platform/system/LocalTime.h"
#include "platform/system/ProgramArguments.h"
#include "platform/system/ProgramFolder.h"
#include "platform/system/Terminal.h"
#include "sfx/Unpack.h"

namespace quillmoor::sfx {
namespace {

enum Status { kAll = 0, kNotAll = 1, kUsage = 2, kDamaged = 3, kWrongPassword = 4, kNoRoom = 5 };

constexpr const char* kUsageText =
    "Unpacks the files that are packed in this program.\n"
    "Usage: %s [--replace] [FOLDER]\n"
    "       %s --test\n"
    "  FOLDER     target folder; without it the program asks, or uses its own name without the "
    "ending\n"
    "  --replace  replaces existing files\n"
    "  --test     checks that everything can be unpacked, and writes nothing\n"
    "A password is asked for, or read from standard input.\n";

struct Options {
  bool replace = false, test = false;
  std::optional<std::string> folder;
};

/// A progress line that is rewritten in place; only on a terminal.
class ProgressLine {
 public:
  explicit ProgressLine(bool shown) : shown_(shown) {}
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void show(const std::string& name, std::uint64_t done, std::uint64_t all) {
    if (!shown_ || TickCountMs() - last_ < 100) return;
    last_ = TickCountMs();
    const auto percent =
        all == 0 ? 100U : static_cast<unsigned>(static_cast<double>(done) / static_cast<double>(all) * 100);
    const auto room = static_cast<std::size_t>(std::max(terminalWidth() - 8, 10));
    std::printf("\r\x1b[K%3u %%  %s", percent,
                name.size() > room ? name.substr(name.size() - room).c_str() : name.c_str());
    std::fflush(stdout);
    used_ = true;
  }
  void clear() {
    if (std::exchange(used_, false)) std::fputs("\r\x1b[K", stdout);
    std::fflush(stdout);
  }

 private:
  bool shown_, used_ = false;
  std::int64_t last_ = 0;
};

std::optional<Options> parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (const std::string& argument : arguments) {
    if (argument == "--replace") {
      options.replace = true;
    } else if (argument == "--test") {
      options.test = true;
    } else if (argument.empty() || argument.starts_with("-") || options.folder) {
      return std::nullopt;
    } else {
      options.folder = argument;
    }
  }
  return options;
}

std::string defaultFolder() {
  const std::string path = ProgramPath();
  const std::size_t dot = path.find_last_of("./\\");
  // A program without an extension has that name itself.
  if (dot == std::string::npos || path[dot] != '.' || dot == ProgramFolder().size()) return path + "-files";
  return path.substr(0, dot);
}

std::string answerTo(const std::string& question) {
  std::fputs(question.c_str(), stdout);
  std::fflush(stdout);
  return ReadLine();
}

int run(const Options& options) {
  const bool interactive = inputIsTerminal();
  const bool terminal = prepareTerminal();
  ZipReader archive(ProgramPath());
  const ArchiveSummary summary = summaryOf(archive);

  std::string folder = options.folder.value_or(defaultFolder());
  if (!options.test && !options.folder && interactive) {
    const std::string answer = answerTo("Unpack into [" + PrintableName(folder) + "]: ");
    if (!answer.empty()) folder = answer;
  }

  ProgressLine line(terminal);
  UnpackEvents events;
  bool replaceAll = options.replace, keepAll = !interactive;
  events.replace = [&](const std::string& name) {
    while (!replaceAll && !keepAll) {
      line.clear();
      const std::string answer =
          answerTo(name + " already exists. Replace it? (y)es, (n)o, (a)ll, no(t) any: ");
      if (answer == "y" || answer == "n") return answer == "y";
      replaceAll = answer == "a";
      keepAll = answer == "t";
    }
    return replaceAll;
  };
  events.refused = [&](const std::string& text) {
    line.clear();
    std::fprintf(stderr, "%s\n", text.c_str());
  };
  events.note = events.refused;
  events.progress = [&](const std::string& name, std::uint64_t done, std::uint64_t all) {
    line.show(name, done, all);
  };

  UnpackResult result;
  for (int attempt = 1;; ++attempt) {
    std::string password;
    if (summary.encrypted) {
      if (interactive) std::fputs("Password: ", stdout);
      std::fflush(stdout);
      password = ReadSecretLine();
      if (interactive && terminal) std::fputs("\n", stdout);
    }
    try {
      result = options.test ? test(archive, password, events) : unpack(archive, folder, password, events);
      break;
    } catch (const ArchiveError& error) {
      constexpr int kAttempts = 3;
      if (error.fault() != ArchiveFault::wrongPassword || !interactive || attempt == kAttempts) throw;
      line.clear();
      std::puts("Wrong password.");
    }
  }
  line.clear();
  const auto count = static_cast<unsigned long long>(result.files);
  std::printf("%llu %s %s%s\n", count, count == 1 ? "file" : "files",
              options.test ? "can be unpacked" : "unpacked into ",
              options.test ? "" : PrintableName(folder).c_str());
  return result.refused == 0 ? kAll : kNotAll;
}

int guarded(const Options& options) {
  try {
    return run(options);
  } catch (const ArchiveError& error) {
    std::fprintf(stderr, "%s\n", PrintableName(error.what()).c_str());
    return error.fault() == ArchiveFault::wrongPassword ? kWrongPassword : kDamaged;
  } catch (const std::system_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return kNoRoom;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return kNoRoom;
  }
}

}  // namespace
}  // namespace quillmoor::sfx

int main(int argc, char** argv) {
  using namespace quillmoor::sfx;
  const std::optional<Options> options = parseOptions(quillmoor::ProgramArguments(argc, argv));
  if (!options) {
    const std::string name = quillmoor::ProgramName();
    std::fprintf(stderr, kUsageText, name.c_str(), name.c_str());
    return kUsage;
  }
  const int status = guarded(*options);
  if (quillmoor::terminalClosesAtEnd()) {
    std::fputs("Press Enter to close this window.", stdout);
    std::fflush(stdout);
    std::getchar();
  }
  return status;
}
