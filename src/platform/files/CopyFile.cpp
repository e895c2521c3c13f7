#include "platform/files/CopyFile.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

#include "base/Pump.h"
#include "platform/files/FileSet.h"
#include "platform/files/Files.h"
#include "platform/files/LocalPath.h"
#include "platform/files/WorkFolder.h"

namespace quillmoor {
namespace {

void copyAll(const std::vector<FileCopy>& files, const std::atomic<bool>& ended) {
  for (const FileCopy& file : files) {
    if (sameFile(file.from, file.to)) {
      throw std::system_error(std::make_error_code(std::errc::file_exists),
                              "source and target are the same file: " + file.to);
    }
  }
  if (files.empty()) return;
  const std::string folder = FolderPart(files.back().to);
  RemoveStaleTemporaries(folder);
  endKilledExchange(files.back().to);
  const WorkFolder unfinished(folder);
  for (std::size_t i = 0; i < files.size(); ++i) CopyFileTo(unfinished.file(i), files[i].from, ended);
  // A former copy is replaced only by one that is on the disk.
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (pathExists(files[i].to) && !flushFile(unfinished.file(i))) {
      throw std::system_error(std::make_error_code(std::errc::io_error), "cannot write " + files[i].to);
    }
  }
  std::vector<SetFile> set;
  for (std::size_t i = 0; i < files.size(); ++i) set.push_back({unfinished.file(i), files[i].to});
  renameSetIntoPlace(set);
}

/// Copies on a thread of its own, since a slow disk or network may block it for long.
class Copier {
 public:
  explicit Copier(const std::vector<FileCopy>& files) : thread_([this, &files] { run(files); }) {}
  ~Copier() {
    end();
    if (thread_.joinable()) thread_.join();
  }
  Copier(const Copier&) = delete;
  Copier& operator=(const Copier&) = delete;

  void end() { ended_ = true; }

  /// True when all is done or something has failed.
  bool waitFor(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return finishing_.wait_for(lock, time, [this] { return finished_; });
  }

  void finish() {
    thread_.join();
    if (error_) std::rethrow_exception(error_);
  }

 private:
  void run(const std::vector<FileCopy>& files) {
    try {
      copyAll(files, ended_);
    } catch (...) {
      error_ = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    finished_ = true;
    finishing_.notify_one();
  }

  std::atomic<bool> ended_{false};
  std::exception_ptr error_;
  std::mutex mutex_;
  std::condition_variable finishing_;
  bool finished_ = false;
  std::thread thread_;  // last: it uses the members above
};

}  // namespace

void CopyWholeFiles(const std::vector<FileCopy>& files, const std::function<bool()>& goOn) {
  Copier copier(files);
  while (!copier.waitFor(kPumpInterval / 2)) {
    if (goOn && !goOn()) copier.end();
  }
  copier.finish();
}

}  // namespace quillmoor
