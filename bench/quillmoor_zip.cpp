// quillmoor-zip: packs a folder from the command line, the way a backup run does. For measuring and for the
// tests; it is not installed.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "platform/files/LocalPath.h"
#include "platform/system/ProgramArguments.h"
#include "platform/zip/ZipArchive.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kUsage =
    "Usage: quillmoor-zip [--password TEXT] [--segments BYTES] [--stub FILE] [--figures] FOLDER ARCHIVE\n"
    "  --stub FILE   makes a self-extracting archive with this stub\n"
    "  --figures     prints what was packed and the longest time between two calls of the pump\n"
    "Ends with 0 when all was packed, with 1 when something was left out, with 2 when there is no archive.\n";

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = quillmoor::ProgramArguments(argc, argv);
  std::optional<std::string> password, stub;
  std::optional<quillmoor::ZipSegmentOptions> segments;
  bool figures = false;
  std::size_t at = 0;
  for (; at < arguments.size() && arguments[at].starts_with("--"); ++at) {
    const std::string& option = arguments[at];
    const bool more = at + 1 < arguments.size();
    if (option == "--figures") {
      figures = true;
    } else if (more && option == "--password") {
      password = arguments[++at];
    } else if (more && option == "--stub") {
      stub = arguments[++at];
    } else if (more && option == "--segments") {
      segments = quillmoor::ZipSegmentOptions{std::strtoll(arguments[++at].c_str(), nullptr, 10)};
    } else {
      break;
    }
  }
  if (arguments.size() - at != 2) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  quillmoor::ZipArchive archive;
  archive.onError = [](const std::string& description) { std::fprintf(stderr, "%s\n", description.c_str()); };
  Clock::time_point last = Clock::now();
  Clock::duration longest{};
  archive.pump = [&] {
    const auto now = Clock::now();
    longest = std::max(longest, now - last);
    last = now;
  };
  try {
    archive.addFiles(arguments[at] + quillmoor::kLocalSeparator + "*", true, password);
    const std::string target = arguments[at + 1];
    last = Clock::now();
    const quillmoor::ZipResult result =
        stub ? archive.writeSelfExtracting(target, *stub, segments) : archive.write(target, segments);
    archive.pump();
    if (figures) {
      std::printf(
          "%lld files, %lld folders, %lld bytes in, %lld bytes out, %zu segments, longest pump gap %.1f ms\n",
          static_cast<long long>(result.files), static_cast<long long>(result.folders),
          static_cast<long long>(result.inputBytes), static_cast<long long>(result.outputBytes),
          result.paths.size(), std::chrono::duration<double, std::milli>(longest).count());
    }
    return result.errors == 0 ? 0 : 1;
  } catch (const quillmoor::ZipError&) {
    return 2;  // the error event has said why
  }
}
