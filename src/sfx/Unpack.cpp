#include "sfx/Unpack.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/SafeName.h"
#include "platform/files/ArchiveFiles.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/WorkFolder.h"
#include "sfx/EntryName.h"

namespace quillmoor::sfx {
namespace {

/// Restores what can be, and tells why something could not: on some disks nobody, or only another user, may
/// set times or permissions.
std::optional<std::error_code> stateLacks(const std::string& path, const FileState& state,
                                          std::uint8_t hostSystem) {
  try {
    restoreState(path, state, hostSystem);
  } catch (const std::system_error& error) {
    return error.code();
  }
  return std::nullopt;
}

class Unpacker {
 public:
  Unpacker(ZipReader& archive, std::string folder, std::string_view password, const UnpackEvents& events)
      : archive_(archive), folder_(std::move(folder)), password_(password), events_(events) {
    all_ = summaryOf(archive).bytes;
    while (folder_.size() > 1 && isSeparator(folder_.back()) && isSeparator(folder_[folder_.size() - 2]))
      folder_.pop_back();
    if (folder_.empty() || !isSeparator(folder_.back())) folder_ += kLocalSeparator;
  }

  UnpackResult run() {
    makeFolderItself();
    RemoveStaleTemporaries(folder_);
    archive_.forEach([this](const ArchiveEntry& entry) { unpackEntry(entry); });
    // Only now: what was unpacked into them has changed their times, and a folder may not be written.
    for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
      if (const auto lacks = stateLacks(folder->path, folder->state, folder->hostSystem))
        note(*lacks, folder->shown);
    }
    return result_;
  }

 private:
  struct Folder {
    std::string path, shown;
    FileState state;
    std::uint8_t hostSystem;
  };

  static bool isSeparator(char c) { return c == kLocalSeparator || c == '/'; }

  void refuse(const std::string& line) {
    ++result_.refused;
    if (events_.refused) events_.refused(line);
  }

  void note(const std::error_code& lacks, const std::string& shown) {
    if (events_.note)
      events_.note("unpacked, but its time or permissions could not be restored (" + lacks.message() +
                   "): " + shown);
  }

  void makeFolderItself() {
    for (std::size_t i = 1; i < folder_.size(); ++i) {
      if (isSeparator(folder_[i]) && !LocalFolderExists(folder_.substr(0, i)))
        CreateLocalFolder(folder_.substr(0, i));
    }
    if (!LocalFolderExists(folder_))
      throw std::system_error(std::make_error_code(std::errc::not_a_directory),
                              "cannot make the folder " + folder_);
  }

  /// The folder of the entry, with its separator; every part below the one unpacked into is a folder itself
  /// and no link.
  std::optional<std::string> madeFolder(const std::vector<std::string>& parts, std::size_t count) {
    std::string path = folder_;
    for (std::size_t i = 0; i < count; ++i) {
      path += parts[i];
      if (path.size() >= madeLast_.size() || !madeLast_.starts_with(path + kLocalSeparator)) {
        std::optional<FileKind> kind = pathKind(path);
        const bool wasThere = kind.has_value();
        if (!kind && CreateLocalFolder(path)) kind = FileKind::folder;
        if (kind != FileKind::folder) return std::nullopt;
        if (wasThere && swept_.insert(path).second) RemoveStaleTemporaries(path);
      }
      path += kLocalSeparator;
    }
    madeLast_ = path;
    return path;
  }

  void unpackEntry(const ArchiveEntry& entry) {
    const std::string shown = PrintableName(entry.name);
    const auto parts = partsOf(entry.name);
    if (!parts) return refuse("refused, since its name leads elsewhere: " + shown);
    if (entry.special()) return refuse("refused, since it is a link or no ordinary file: " + shown);
    const std::size_t folders = parts->size() - (entry.folder() ? 0 : 1);
    const std::optional<std::string> folder = madeFolder(*parts, folders);
    if (!folder) return refuse("cannot make the folder of " + shown);
    if (entry.folder()) {
      folders_.push_back({folder->substr(0, folder->size() - 1), shown, entry.state, entry.hostSystem});
      return;
    }
    const std::string target = *folder + parts->back();
    const std::optional<FileKind> there = pathKind(target);
    if (there == FileKind::folder) return refuse("a folder stands in the place of " + shown);
    if (there && !(events_.replace && events_.replace(shown)))
      return refuse("left as it was, since it was there: " + shown);

    std::optional<TemporaryFile> file;
    try {
      file.emplace(*folder);
    } catch (const std::system_error& error) {
      return refuse(error.what());
    }
    std::uint64_t done = result_.bytes;
    archive_.contents(entry, password_, [&](std::span<const std::uint8_t> bytes) {
      file->write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      done += bytes.size();
      if (events_.progress) events_.progress(shown, done, all_);
    });
    result_.bytes = done;
    try {
      file->finishWriting();
      const auto lacks = stateLacks(file->path(), entry.state, entry.hostSystem);
      file->renameTo(target, {});
      if (lacks) note(*lacks, shown);
    } catch (const std::system_error& error) {
      return refuse(error.what());
    }
    ++result_.files;
  }

  ZipReader& archive_;
  std::string folder_;
  std::string_view password_;
  const UnpackEvents& events_;
  std::uint64_t all_ = 0;
  std::string madeLast_;
  std::set<std::string> swept_;  ///< folders that were there and are free of what a killed process has left
  std::vector<Folder> folders_;
  UnpackResult result_;
};

}  // namespace

ArchiveSummary summaryOf(ZipReader& archive) {
  ArchiveSummary summary;
  archive.forEach([&](const ArchiveEntry& entry) {
    if (entry.folder()) return;
    ++summary.files;
    summary.bytes += entry.size;
    summary.encrypted |= entry.encrypted;
  });
  return summary;
}

UnpackResult unpack(ZipReader& archive, const std::string& folder, std::string_view password,
                    const UnpackEvents& events) {
  return Unpacker(archive, folder, password, events).run();
}

UnpackResult test(ZipReader& archive, std::string_view password, const UnpackEvents& events) {
  UnpackResult result;
  const std::uint64_t all = summaryOf(archive).bytes;
  archive.forEach([&](const ArchiveEntry& entry) {
    if (entry.folder()) return;
    const std::string shown = PrintableName(entry.name);
    archive.contents(entry, password, [&](std::span<const std::uint8_t> bytes) {
      result.bytes += bytes.size();
      if (events.progress) events.progress(shown, result.bytes, all);
    });
    ++result.files;
  });
  return result;
}

}  // namespace quillmoor::sfx
