#include "platform/files/FileSet.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/files/ArchiveFiles.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/TargetLock.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/WholeFile.h"
#include "platform/files/WorkFolder.h"

namespace quillmoor {
namespace {

constexpr auto kLongestWait = std::chrono::seconds(10);
constexpr auto kRest = std::chrono::milliseconds(20);

/// In the waiting folder: which names were free when the exchange began, each ended by "/". Files under them
/// belong to the new set alone.
constexpr const char* kFreeNames = ".quillmoor-unfinished-free-names";
constexpr std::size_t kLongestFreeNames = std::size_t{16} << 20;

std::string fileName(const std::string& path) {
  return LocalPathText(LocalPath(path).filename());
}

std::string besides(const std::string& path, const std::string& name) {
  return LocalPathText(LocalPath(path).replace_filename(LocalPath(name)));
}

/// The exchange of one set, in which no other process takes part: the folder where its former files wait, and
/// the lock in it.
class Exchange {
 public:
  /// Begins one, after another process's.
  static Exchange begin(const std::string& mainName) {
    const auto latest = std::chrono::steady_clock::now() + kLongestWait;
    Exchange exchange(mainName);
    for (;;) {
      CreateLocalFolder(exchange.waiting_);
      try {
        exchange.lock_ = TargetLock::acquire(exchange.waiting_);
        if (exchange.lock_) return exchange;
      } catch (const std::system_error&) {
        // Whoever ended the last exchange may just have removed the folder.
        if (pathKind(exchange.waiting_) || std::chrono::steady_clock::now() > latest) throw;
      }
      if (std::chrono::steady_clock::now() > latest)
        throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy),
                                "another program is replacing " + mainName);
      std::this_thread::sleep_for(kRest);
    }
  }
  /// Takes over that of a killed process; nothing when there is none, or its process lives.
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
    RemoveLocalFile(waiting_);  // unless something is left in it
  }

  void noteFreeNames(const std::vector<SetFile>& files) const {
    std::string names;
    for (const SetFile& file : files) {
      if (!pathKind(file.name)) names += fileName(file.name) + "/";
    }
    if (names.empty()) return;
    WholeFile list(LocalPath(waitingPath(kFreeNames)));
    list.write(names);
    list.commit();
  }

  void moveAside(const std::vector<SetFile>& files) const {
    // The main file first: what is left without it does not look whole.
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
      if (pathKind(file->name)) renameFile(file->name, waitingPath(fileName(file->name)));
    }
  }

  /// Where the main file stands, either nothing was moved or all is done, and what waits is removed. Else
  /// it is put back, the main file at the end, so that this can be interrupted as well.
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

  std::string waitingPath(const std::string& name) const { return waiting_ + kLocalSeparator + name; }

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

void giveSetItsNames(const std::vector<SetFile>& files) {
  if (files.size() == 1) return renameFile(files[0].temporary, files[0].name);
  const Exchange exchange = Exchange::begin(files.back().name);
  exchange.end();  // one that was killed since its process was last looked for
  for (const SetFile& file : files) {
    if (!mayBeReplaced(file.name)) {
      throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy),
                              "cannot replace " + file.name);
    }
  }
  // What cannot be done now is left to the next exchange: it does not change how this one went.
  const auto settle = [&] {
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
    settle();
    throw;
  }
  settle();
}

void endKilledExchange(const std::string& mainName) {
  if (const auto exchange = Exchange::takeOver(mainName)) exchange->end();
}

void EndKilledExchanges(const std::string& folder) {
  RemoveStaleTemporaries(folder);
  const bool ended = folder.empty() || folder.back() == kLocalSeparator;
  std::string failures;
  for (const std::string& name : ReservedNamesIn(folder)) {
    const auto set = SetOfWaitingFolder(name);
    if (!set) continue;
    try {
      endKilledExchange((ended ? folder : folder + kLocalSeparator) + *set);
    } catch (const std::system_error& error) {
      failures.append(failures.empty() ? "" : "; ").append(error.what());
    }
  }
  if (!failures.empty()) throw std::runtime_error(failures);
}

}  // namespace quillmoor
