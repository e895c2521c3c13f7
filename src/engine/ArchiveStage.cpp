#include "engine/ArchiveStage.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "base/ErrorGuard.h"
#include "base/LenientNumber.h"
#include "base/SplitText.h"
#include "engine/LogColours.h"
#include "engine/SafeName.h"
#include "engine/mGeneral.h"
#include "platform/files/CopyFile.h"
#include "platform/files/LocalPath.h"
#include "platform/zip/ZipOutput.h"
#include "profiles/NameOrder.h"
#include "profiles/mBase64.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

constexpr std::int32_t kSmallestSpanKB = 350;
constexpr const char* kSelfExtracting = ".exe";

void logZipError(RunLog& log, const std::string& description) {
  log.AppendLog("Zip Error: " + PrintableName(description) + "\r\n", log_colour::kError, true);
}

/// Shows the progress, the size and the current file of a packing; clears all three when destroyed.
class PackingDisplay {
 public:
  explicit PackingDisplay(RunDisplay& display) : display_(display) {}
  ~PackingDisplay() {
    display_.showCurrentFile("");
    display_.showProgress(0);
  }
  PackingDisplay(const PackingDisplay&) = delete;
  PackingDisplay& operator=(const PackingDisplay&) = delete;

  void show(const ZipProgress& progress) {
    if (progress.status == ZipStatus::done) return display_.showProgress(0);
    if (progress.item != item_) {
      item_ = progress.item;
      display_.showCurrentFile(item_);
    }
    if (progress.size < 1) return;
    display_.showProgress(Percentage(progress.count, progress.size));
    display_.showFileSize(FormatSize(static_cast<double>(progress.size)));
  }

 private:
  RunDisplay& display_;
  std::string item_;
};

std::string fileNameOf(const std::string& path) {
  return path.substr(path.rfind(kLocalSeparator) + 1);
}

/// Unlike the paths of a walk, these keep brackets and blanks.
std::string withSeparator(std::string folder) {
  if (!folder.ends_with(kLocalSeparator)) folder += kLocalSeparator;
  return folder;
}

}  // namespace

std::vector<std::string> CopyDestinations(const std::string& ZipCopies) {
  std::vector<std::string> destinations = SplitText(ZipCopies, "|");
  // An empty part names no folder; with a separator it would be the root of them all.
  std::erase(destinations, "");
  SortNames(destinations);
  return destinations;
}

ZipArchiveStage::ZipArchiveStage(ApplicationSettings& settings, ArchivePacker& packer, std::string stubPath,
                                 Pump pump)
    : settings_(settings), packer_(packer), stubPath_(std::move(stubPath)), pump_(std::move(pump)) {}

void ZipArchiveStage::CreateArchive(const std::string&, RunState& run, RunLog& log, RunDisplay& display) {
  // Both happen whatever the other settings are: the correction lasts until the program ends, and a size that
  // exceeds 32 bits ends the stage.
  settings_.ZipSpanSize = std::max(settings_.ZipSpanSize, kSmallestSpanKB);
  const ZipSegmentOptions segments{MultiplyLong(settings_.ZipSpanSize, 1024)};

  // Deliberate: without an archive the copies are tried all the same and fail, since their source is the
  // folder and their name is empty.
  Archive archive{run.LocalTargetFolder, "", {run.LocalTargetFolder}};
  if (settings_.CreateZip == 1) archive = pack(run, segments, log, display);
  for (const std::string& destination : CopyDestinations(settings_.ZipCopies))
    copyInto(destination, archive, run, log);
}

ZipArchiveStage::Archive ZipArchiveStage::pack(RunState& run, const ZipSegmentOptions& segments, RunLog& log,
                                               RunDisplay& display) {
  PackingOrder order;
  if (!settings_.ZipPassword.empty()) {
    try {
      order.password = password();
    } catch (const std::exception& error) {
      logZipError(log, error.what());
      throw;
    }
  }
  const bool selfExtracting = settings_.ZipSelfExtract != 0;
  const char* const ending = selfExtracting ? kSelfExtracting : ".zip";
  order.path = run.LocalTargetFolder + ending;
  // Deliberate: the doubled separator is harmless.
  order.pattern = run.localTargetPath + kLocalSeparator + "*";
  if (selfExtracting) order.stubPath = stubPath_;
  if (settings_.SplitZip != 0) order.segments = segments;
  PackingDisplay shown(display);
  order.onProgress = [&](const ZipProgress& progress) { shown.show(progress); };
  order.onError = [&](const std::string& description) {
    logZipError(log, description);
    run.failures.add(order.path, description);
  };

  // The packer replaces an existing archive of the same name only when the new one is complete.
  log.AppendLog(selfExtracting ? "\r\nCreating Self-Extract Zip File: " : "\r\nCreating Zip File: ",
                log_colour::kArchive, true);
  log.AppendLog(order.path + "\r\n", log_colour::kArchivePath, false);
  ZipResult result = packer_.pack(order);
  log.AppendLog(selfExtracting ? "Done Self-Extracting Zip File.\r\n" : "Done Zip File.\r\n",
                log_colour::kArchiveDone, true);
  return {order.path, run.localFolderName + ending, std::move(result.paths)};
}

/// The archive password in clear text. Raises when it cannot be deciphered: no archive is better than an
/// unprotected one.
std::string ZipArchiveStage::password() const {
  std::string text;
  try {
    text = mRC4::Decipher(settings_.ZipPassword);
  } catch (const mBase64::DecodeError&) {
  }
  if (text.empty()) throw std::runtime_error("The setting ZipPassword cannot be deciphered. Set it again.");
  return text;
}

void ZipArchiveStage::copyInto(const std::string& destination, const Archive& archive, RunState& run,
                               RunLog& log) {
  const std::string folder = withSeparator(destination);
  log.AppendLog("Copy Zip file to: " + folder + archive.fileName + "\r\n", log_colour::kCopy, true);
  const auto goOn = [this] {
    if (pump_) pump_();
    return true;
  };
  // All segments are copied, since none is usable alone. The one with the archive's name appears last: once
  // it exists, the copy is complete.
  std::vector<FileCopy> files;
  for (const std::string& file : archive.files) {
    if (file != archive.path) files.push_back({file, folder + fileNameOf(file)});
  }
  files.push_back({archive.path, folder + archive.fileName});
  std::string reason;
  if (Guarded([&] { CopyWholeFiles(files, goOn); }, reason)) {
    const zip::SegmentNames names(folder + archive.fileName, archive.fileName.ends_with(kSelfExtracting));
    Guarded([&] { names.removeSurplus(static_cast<std::uint32_t>(files.size())); });
    log.AppendLog("Copy files success.\r\n", log_colour::kCopy, true);
  } else {
    log.AppendLog("Copy files failed.\r\n", log_colour::kError, true);
    run.failures.add(folder + archive.fileName, reason);
  }
}

}  // namespace quillmoor
