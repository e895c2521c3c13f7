// The program in front of a self-extracting archive: unpacks what stands behind it.
//
// Ends with 0 when all was unpacked (even if the disk did not take every time and permission), 1 when
// something was left out, 2 for arguments that cannot be, 3 when the archive is damaged or incomplete, 4 for
// a wrong password, 5 when the disk does not take it.
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
    "  FOLDER     where to; else it is asked for, or a folder of this program's name beside it\n"
    "  --replace  writes over files that are there already\n"
    "  --test     checks that all can be unpacked, and writes nothing\n"
    "A password is asked for, or read from standard input.\n";

struct Wishes {
  bool replace = false, test = false;
  std::optional<std::string> folder;
};

/// The line that is written over as the work goes on; only on a terminal.
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

std::optional<Wishes> wishesOf(const std::vector<std::string>& arguments) {
  Wishes wishes;
  for (const std::string& argument : arguments) {
    if (argument == "--replace") {
      wishes.replace = true;
    } else if (argument == "--test") {
      wishes.test = true;
    } else if (argument.empty() || argument.starts_with("-") || wishes.folder) {
      return std::nullopt;
    } else {
      wishes.folder = argument;
    }
  }
  return wishes;
}

std::string defaultFolder() {
  const std::string path = ProgramPath();
  const std::size_t dot = path.find_last_of("./\\");
  // Without an ending to take away the program itself has that name.
  if (dot == std::string::npos || path[dot] != '.' || dot == ProgramFolder().size()) return path + "-files";
  return path.substr(0, dot);
}

std::string answerTo(const std::string& question) {
  std::fputs(question.c_str(), stdout);
  std::fflush(stdout);
  return ReadLine();
}

int run(const Wishes& wishes) {
  const bool asks = inputIsTerminal();
  const bool terminal = prepareTerminal();
  ZipReader archive(ProgramPath());
  const ArchiveSummary summary = summaryOf(archive);

  std::string folder = wishes.folder.value_or(defaultFolder());
  if (!wishes.test && !wishes.folder && asks) {
    const std::string answer = answerTo("Unpack into [" + PrintableName(folder) + "]: ");
    if (!answer.empty()) folder = answer;
  }

  ProgressLine line(terminal);
  UnpackEvents events;
  bool replaceAll = wishes.replace, keepAll = !asks;
  events.replace = [&](const std::string& name) {
    while (!replaceAll && !keepAll) {
      line.clear();
      const std::string answer =
          answerTo(name + " is there already. Replace it? (y)es, (n)o, (a)ll, no(t) any: ");
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
      if (asks) std::fputs("Password: ", stdout);
      std::fflush(stdout);
      password = ReadSecretLine();
      if (asks && terminal) std::fputs("\n", stdout);
    }
    try {
      result = wishes.test ? test(archive, password, events) : unpack(archive, folder, password, events);
      break;
    } catch (const ArchiveError& error) {
      constexpr int kAttempts = 3;
      if (error.fault() != ArchiveFault::wrongPassword || !asks || attempt == kAttempts) throw;
      line.clear();
      std::puts("That is not the password.");
    }
  }
  line.clear();
  const auto count = static_cast<unsigned long long>(result.files);
  std::printf("%llu %s %s%s\n", count, count == 1 ? "file" : "files",
              wishes.test ? "can be unpacked" : "unpacked into ",
              wishes.test ? "" : PrintableName(folder).c_str());
  return result.refused == 0 ? kAll : kNotAll;
}

int guarded(const Wishes& wishes) {
  try {
    return run(wishes);
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
  const std::optional<Wishes> wishes = wishesOf(quillmoor::ProgramArguments(argc, argv));
  if (!wishes) {
    const std::string name = quillmoor::ProgramName();
    std::fprintf(stderr, kUsageText, name.c_str(), name.c_str());
    return kUsage;
  }
  const int status = guarded(*wishes);
  if (quillmoor::terminalClosesAtEnd()) {
    std::fputs("Press Enter to close this window.", stdout);
    std::fflush(stdout);
    std::getchar();
  }
  return status;
}
