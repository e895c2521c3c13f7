#include "platform/zip/ZipArchive.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <variant>

#include "platform/zip/ZipDeflate.h"
#include "platform/zip/ZipOutput.h"
#include "platform/zip/ZipPacker.h"
#include "platform/zip/ZipWalk.h"

namespace quillmoor {
namespace {

using Clock = std::chrono::steady_clock;
/// Short, since the processors are busy with packing and this thread may have to wait its turn.
constexpr std::chrono::milliseconds kSlice = kPumpInterval / 4;

/// The way from the packing thread to the caller's: events in their order, and the end. It holds only so
/// much, so that the packing never runs far ahead of what the caller has heard of.
class EventQueue final : public zip::PackEvents {
 public:
  using Event = std::variant<ZipProgress, std::string>;

  explicit EventQueue(const std::atomic<bool>& aborted) : aborted_(aborted) {}

  void progress(ZipProgress progress) override {
    const bool large = progress.size > static_cast<std::int64_t>(zip::kBlock);
    push(std::move(progress), large ? kLargeWeight : 1);
  }
  void error(const std::string& description) override { push(description, 1); }
  void checkAborted() override {
    if (aborted_) throw ZipError(ZipErrorNumber::aborted, "the packing was stopped");
  }

  void settle() override {
    std::unique_lock lock(mutex_);
    settling_ = true;
    changed_.notify_all();
    while (!settled_) {
      changed_.wait_for(lock, kSlice);
      checkAborted();
    }
    checkAborted();
  }

  void finish() {
    const std::lock_guard lock(mutex_);
    finished_ = true;
    changed_.notify_all();
  }

  /// Waits a little for events. False when there are none and there will be none.
  bool take(std::vector<Event>& events) {
    events.clear();
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kSlice, [&] { return finished_ || settling_ || weight_ >= kMost / 2; });
    // Who asks for more has given out all that was taken before.
    if (settling_ && events_.empty()) {
      settled_ = true;
      settling_ = false;
    }
    events.swap(events_);
    weight_ = 0;
    changed_.notify_all();
    return !events.empty() || !finished_;
  }

 private:
  /// In files; a block of a large one weighs more, for it stands for more bytes.
  static constexpr int kMost = 512, kLargeWeight = 32;

  void push(Event event, int weight) {
    std::unique_lock lock(mutex_);
    while (weight_ >= kMost) {
      // An abort is asked for without a call here, by whoever holds up the taking of events.
      changed_.wait_for(lock, kSlice);
      checkAborted();
    }
    events_.push_back(std::move(event));
    weight_ += weight;
    if (weight_ >= kMost / 2) changed_.notify_all();
  }

  const std::atomic<bool>& aborted_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Event> events_;
  int weight_ = 0;
  bool settling_ = false, settled_ = false;
  bool finished_ = false;
};

}  // namespace

class ZipArchive::Impl {
 public:
  std::vector<zip::PackSource> sources;
  std::atomic<bool> aborted = false;
  bool busy = false;

  /// Packs on a thread of its own, and gives events and pumps on this one until it is through.
  ZipResult run(const ZipArchive& archive, const zip::PackRequest& request) {
    EventQueue queue(aborted);
    ZipResult result;
    std::exception_ptr failure;
    const auto packAll = [&] {
      try {
        result = zip::pack(request, queue);
      } catch (...) {
        failure = std::current_exception();
      }
      queue.finish();
    };
    std::thread packing;
    try {
      packing = std::thread(packAll);
    } catch (const std::system_error& error) {
      throw ZipError(ZipErrorNumber::internal, std::string("cannot pack: ") + error.what());
    }
    // An event or the pump may raise; the packing is ended first.
    struct Join {
      std::thread& thread;
      std::atomic<bool>& aborted;
      ~Join() {
        if (!thread.joinable()) return;
        aborted = true;
        thread.join();
      }
    } const join{packing, aborted};

    std::vector<EventQueue::Event> events;
    Clock::time_point lastPump{};
    const auto pumpIfDue = [&] {
      const auto now = Clock::now();
      if (now - lastPump < kSlice) return;
      lastPump = now;
      if (archive.pump) archive.pump();
    };
    while (queue.take(events)) {
      for (const EventQueue::Event& event : events) {
        pumpIfDue();
        if (const auto* progress = std::get_if<ZipProgress>(&event)) {
          if (archive.onProgress && !aborted) archive.onProgress(*progress);
        } else if (archive.onError) {
          archive.onError(std::get<std::string>(event));
        }
      }
      pumpIfDue();
    }
    packing.join();
    if (failure) std::rethrow_exception(failure);
    return result;
  }
};

ZipArchive::ZipArchive() : impl_(std::make_unique<Impl>()) {}
ZipArchive::~ZipArchive() = default;

void ZipArchive::addFiles(const std::string& pattern, bool recurse,
                          const std::optional<std::string>& password) {
  if (impl_->busy) fail(ZipErrorNumber::busy, "an archive is being written");
  if (!zip::splitWildcardPath(pattern))
    fail(ZipErrorNumber::badArgument, "not a folder with a name pattern behind it: " + pattern);
  constexpr std::size_t kLongestPassword = 1000;
  if (password && (password->empty() || password->size() > kLongestPassword))
    fail(ZipErrorNumber::badArgument, "a password has from 1 to 1,000 bytes");
  impl_->sources.push_back({pattern, recurse, password});
}

ZipResult ZipArchive::write(const std::string& path, const std::optional<ZipSegmentOptions>& segments) {
  return write(path, std::nullopt, segments);
}

ZipResult ZipArchive::writeSelfExtracting(const std::string& path, const std::string& stubPath,
                                          const std::optional<ZipSegmentOptions>& segments) {
  return write(path, std::optional(stubPath), segments);
}

ZipResult ZipArchive::write(const std::string& path, const std::optional<std::string>& stubPath,
                            const std::optional<ZipSegmentOptions>& segments) {
  if (impl_->busy) fail(ZipErrorNumber::busy, "an archive is being written");
  zip::PackRequest request{path, stubPath, std::nullopt, std::exchange(impl_->sources, {})};
  const zip::SegmentNames names(path, stubPath.has_value());
  if (path.size() == names.folder().size() || path.find('\0') != std::string::npos)
    fail(ZipErrorNumber::badArgument, "not a file's name: " + path);
  if (segments) {
    if (segments->segmentBytes < ZipSegmentOptions::kMinimum)
      fail(ZipErrorNumber::badArgument, "segments of less than 65,536 bytes: " + path);
    if (!names.mayHaveSegments())
      fail(ZipErrorNumber::badArgument,
           "an archive in segments is called ." + std::string(stubPath ? "exe" : "zip") + ": " + path);
    request.segmentBytes = segments->segmentBytes;
  }
  impl_->aborted = false;
  impl_->busy = true;
  struct NotBusy {
    bool& busy;
    ~NotBusy() { busy = false; }
  } const notBusy{impl_->busy};
  try {
    return impl_->run(*this, request);
  } catch (const ZipError& error) {
    if (onError) onError(error.what());
    throw;
  }
}

void ZipArchive::fail(ZipErrorNumber number, const std::string& description) const {
  if (onError) onError(description);
  throw ZipError(number, description);
}

bool ZipArchive::busy() const {
  return impl_->busy;
}

void ZipArchive::abort() {
  impl_->aborted = true;
}

}  // namespace quillmoor
