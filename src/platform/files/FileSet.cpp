#include "platform/files/FileSet.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/files/AtomicFile.h"
#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/TargetLock.h"
#include "platform/files/WorkFolder.h"

namespace quillmoor {
namespace {

constexpr auto kLongestWait = std::chrono::seconds(10);
constexpr auto kRetryInterval = std::chrono::milliseconds(20);

/// In the waiting folder: the names that were free when the exchange began, each followed by "/". Files under
/// them belong to the new set alone.
constexpr const char* kFreeNames = ".quillmoor-unfinished-free-names";
constexpr std::size_t kLongestFreeNames = std::size_t{16} << 20;

std::string fileName(const std::string& path) {
  return path.substr(FolderPart(path).size());
}

std::string besides(const std::string& path, const std::string& name) {
  return FolderPart(path) + name;
}

/// The exchange of one set by one process: the folder where the former files wait, and the lock in it.
class Exchange {
 public:
  /// Waits for another process's exchange to end, then begins one.
  static Exchange begin(const std::string& mainName) {
    const auto latest = std::chrono::steady_clock::now() + kLongestWait;
    Exchange exchange(mainName);
    for (;;) {
      createFolder(exchange.waiting_);
      try {
        exchange.lock_ = TargetLock::acquire(exchange.waiting_);
        if (exchange.lock_) return exchange;
      } catch (const std::system_error&) {
        // The process that ended the last exchange may just have removed the folder.
        if (pathKind(exchange.waiting_) || std::chrono::steady_clock::now() > latest) throw;
      }
      if (std::chrono::steady_clock::now() > latest)
        throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy),
                                "another program is replacing " + mainName);
      std::this_thread::sleep_for(kRetryInterval);
    }
  }
  /// Takes over the exchange of a killed process; nothing when there is none, or its process lives.
  static std::optional<Exchange> takeOver(const std::string& mainName) {
    Exchange exchange(mainName);
    if (pathKind(exchange.waiting_) != FileKind::folder) return std::nullopt;
    exchange.lock_ = TargetLock::acquire(exchange.waiting_);
    if (!exchange.lock_) return std::nullopt;
    return exchange;
  }

  Exchange(Exchange&&) = default;
  Exchange& operator=(Exchange&&) = delete;
  ~Exchange() {
    if (!lock_) return;
    lock_.reset();
    removeFolder(waiting_);  // fails while something is left in it
  }

  void noteFreeNames(const std::vector<SetFile>& files) const {
    std::string names;
    for (const SetFile& file : files) {
      if (!pathKind(file.name)) names += fileName(file.name) + "/";
    }
    if (names.empty()) return;
    AtomicFile list(waitingPath(kFreeNames));
    list.write(names);
    list.commit();
  }

  void moveAside(const std::vector<SetFile>& files) const {
    // The main file first: without it the rest does not look whole.
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
      if (pathKind(file->name)) renameFile(file->name, waitingPath(fileName(file->name)));
    }
  }

  /// Where the main file exists, either nothing was moved or all is done: removes the files that wait. Else
  /// moves them back, the main file at the end, so that this can be interrupted as well.
  void end() const {
    const bool complete = pathKind(mainName_).has_value();
    const std::string main = fileName(mainName_);
    std::vector<std::string> own, former;
    readFolder(waiting_, false, [&](const std::string& name, FileKind) {
      if (name != kLockFileName) (IsReservedLocalName(name) ? own : former).push_back(name);
    });
    if (!complete) removeNewFiles();
    std::partition(former.begin(), former.end(), [&](const std::string& name) { return name != main; });
    for (const std::string& name : former) {
      if (complete) {
        removeFile(waitingPath(name));
      } else {
        renameFile(waitingPath(name), besides(mainName_, name));
      }
    }
    for (const std::string& name : own) removeFile(waitingPath(name));
  }

 private:
  explicit Exchange(const std::string& mainName)
      : mainName_(mainName), waiting_(besides(mainName, WaitingFolderName(fileName(mainName)))) {}

  std::string waitingPath(const std::string& name) const { return PathIn(waiting_, name); }

  void removeNewFiles() const {
    const std::string list = waitingPath(kFreeNames);
    if (pathKind(list) != FileKind::file) return;
    InputFile file(list, false);
    std::string names(std::min(static_cast<std::size_t>(file.state().size), kLongestFreeNames), '\0');
    names.resize(file.read({reinterpret_cast<std::uint8_t*>(names.data()), names.size()}));
    for (std::size_t at = 0, end; (end = names.find('/', at)) != std::string::npos; at = end + 1) {
      const std::string name = names.substr(at, end - at);
      if (name == fileName(name) && pathKind(besides(mainName_, name)) == FileKind::file)
        removeFile(besides(mainName_, name));
    }
  }

  std::string mainName_, waiting_;
  std::unique_ptr<TargetLock> lock_;
};

}  // namespace

void renameSetIntoPlace(const std::vector<SetFile>& files) {
  if (files.size() == 1) return renameFile(files[0].temporary, files[0].name);
  const Exchange exchange = Exchange::begin(files.back().name);
  exchange.end();  // what a process left that was killed since the last look
  for (const SetFile& file : files) {
    if (!mayBeReplaced(file.name)) {
      throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy),
                              "cannot replace " + file.name);
    }
  }
  // A failure is left to the next exchange: it does not change the outcome of this one.
  const auto endQuietly = [&] {
    try {
      exchange.end();
    } catch (const std::system_error&) {
    }
  };
  try {
    exchange.noteFreeNames(files);
    exchange.moveAside(files);
    for (const SetFile& file : files) renameFile(file.temporary, file.name);
  } catch (const std::system_error&) {
    endQuietly();
    throw;
  }
  endQuietly();
}

void endKilledExchange(const std::string& mainName) {
  if (const auto exchange = Exchange::takeOver(mainName)) exchange->end();
}

void EndKilledExchanges(const std::string& folder) {
  RemoveStaleTemporaries(folder);
  std::string failures;
  for (const std::string& name : ReservedNamesIn(folder)) {
    const auto set = SetOfWaitingFolder(name);
    if (!set) continue;
    try {
      endKilledExchange(PathIn(folder, *set));
    } catch (const std::system_error& error) {
      failures.append(failures.empty() ? "" : "; ").append(error.what());
    }
  }
  if (!failures.empty()) throw std::runtime_error(failures);
}

}  // namespace quillmoor
