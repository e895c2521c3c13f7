#include "sfx/Unpack.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/SafeName.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/Files.h"
#include "platform/files/WorkFolder.h"
#include "sfx/EntryName.h"

namespace quillmoor::sfx {
namespace {

/// Restores times and permissions where possible; returns the error otherwise: some disks let nobody, or only
/// another user, set them.
std::optional<std::error_code> restoreStateError(const std::string& path, const FileState& state,
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
    createTarget();
    RemoveStaleTemporaries(folder_);
    archive_.forEach([this](const ArchiveEntry& entry) { unpackEntry(entry); });
    // Only now: unpacking into a folder changes its time, and a folder may be read-only.
    for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
      if (const auto error = restoreStateError(folder->path, folder->state, folder->hostSystem))
        note(*error, folder->shown);
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

  void note(const std::error_code& error, const std::string& shown) {
    if (events_.note)
      events_.note("unpacked, but its time or permissions could not be restored (" + error.message() +
                   "): " + shown);
  }

  void createTarget() {
    for (std::size_t i = 1; i < folder_.size(); ++i) {
      if (isSeparator(folder_[i]) && !folderExists(folder_.substr(0, i))) createFolder(folder_.substr(0, i));
    }
    if (!folderExists(folder_))
      throw std::system_error(std::make_error_code(std::errc::not_a_directory),
                              "cannot create the folder " + folder_);
  }

  /// Creates the entry's folder and returns its path with a separator; nullopt when a part below the target
  /// folder is a link or not a folder.
  std::optional<std::string> entryFolder(const std::vector<std::string>& parts, std::size_t count) {
    std::string path = folder_;
    for (std::size_t i = 0; i < count; ++i) {
      path += parts[i];
      if (path.size() >= lastCreated_.size() || !lastCreated_.starts_with(path + kLocalSeparator)) {
        std::optional<FileKind> kind = pathKind(path);
        const bool wasThere = kind.has_value();
        if (!kind && !createFolder(path)) kind = FileKind::folder;
        if (kind != FileKind::folder) return std::nullopt;
        if (wasThere && swept_.insert(path).second) RemoveStaleTemporaries(path);
      }
      path += kLocalSeparator;
    }
    lastCreated_ = path;
    return path;
  }

  void unpackEntry(const ArchiveEntry& entry) {
    const std::string shown = PrintableName(entry.name);
    const auto parts = partsOf(entry.name);
    if (!parts) return refuse("refused, since its name is not allowed here: " + shown);
    if (entry.special()) return refuse("refused, since it is a link or a special file: " + shown);
    const std::size_t folders = parts->size() - (entry.folder() ? 0 : 1);
    const std::optional<std::string> folder = entryFolder(*parts, folders);
    if (!folder) return refuse("cannot create the folder of " + shown);
    if (entry.folder()) {
      folders_.push_back({folder->substr(0, folder->size() - 1), shown, entry.state, entry.hostSystem});
      return;
    }
    const std::string target = *folder + parts->back();
    const std::optional<FileKind> there = pathKind(target);
    if (there == FileKind::folder) return refuse("not unpacked, since a folder has its name: " + shown);
    if (there && !(events_.replace && events_.replace(shown)))
      return refuse("not unpacked, since it already exists: " + shown);

    std::optional<AtomicFile> file;
    try {
      file.emplace(target);
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
      const auto lacks = restoreStateError(file->temporaryPath(), entry.state, entry.hostSystem);
      file->commit();
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
  std::string lastCreated_;
  std::set<std::string> swept_;  ///< existing folders already cleared of a killed process's temporary files
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
