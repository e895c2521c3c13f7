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
/// Short, as this thread may have to wait for a processor while packing keeps them busy.
constexpr std::chrono::milliseconds kSlice = kPumpInterval / 4;

/// Passes events in order from the packing thread to the caller's, and its end. Bounded, so that packing
/// never runs far ahead of the events handled.
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

  void drain() override {
    std::unique_lock lock(mutex_);
    draining_ = true;
    changed_.notify_all();
    while (!drained_) {
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

  /// Waits briefly for events. False when there are none and will be none.
  bool take(std::vector<Event>& events) {
    events.clear();
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kSlice, [&] { return finished_ || draining_ || weight_ >= kMost / 2; });
    // A caller that asks for more has handled all events taken before.
    if (draining_ && events_.empty()) {
      drained_ = true;
      draining_ = false;
    }
    events.swap(events_);
    weight_ = 0;
    changed_.notify_all();
    return !events.empty() || !finished_;
  }

 private:
  /// Weight in files; a block of a large file weighs more, as it has more bytes.
  static constexpr int kMost = 512, kLargeWeight = 32;

  void push(Event event, int weight) {
    std::unique_lock lock(mutex_);
    while (weight_ >= kMost) {
      // An abort is only a flag, set by the thread that is not taking events: poll it.
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
  bool draining_ = false, drained_ = false;
  bool finished_ = false;
};

}  // namespace

class ZipArchive::Impl {
 public:
  std::vector<zip::PackSource> sources;
  std::atomic<bool> aborted = false;
  bool busy = false;

  /// Packs on a thread of its own; raises the events and pumps on this one until it is done.
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
    // An event handler or the pump may raise; end the packing first.
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
    fail(ZipErrorNumber::badArgument, "not a folder followed by a name pattern: " + pattern);
  constexpr std::size_t kLongestPassword = 1000;
  if (password && (password->empty() || password->size() > kLongestPassword))
    fail(ZipErrorNumber::badArgument, "a password must have 1 to 1,000 bytes");
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
    fail(ZipErrorNumber::badArgument, "not a file name: " + path);
  if (segments) {
    if (segments->segmentBytes < ZipSegmentOptions::kMinimum)
      fail(ZipErrorNumber::badArgument, "segments smaller than 65,536 bytes: " + path);
    if (!names.mayHaveSegments())
      fail(ZipErrorNumber::badArgument,
           "an archive in segments must end in ." + std::string(stubPath ? "exe" : "zip") + ": " + path);
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
