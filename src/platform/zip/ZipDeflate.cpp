#include "platform/zip/ZipDeflate.h"

#include <zlib.h>

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>

#include "platform/system/ProcessPriority.h"

namespace quillmoor::zip {
namespace {

constexpr unsigned kMostThreads = 8;  // more would need more memory than a backup should use
constexpr int kLevel = 6, kQuickLevel = 1;
constexpr std::size_t kSample = 8192;
constexpr std::size_t kLongestStoredBlock = 65'535;

/// A reusable raw deflate stream.
class Deflater {
 public:
  explicit Deflater(int level) {
    if (deflateInit2(&stream_, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
      throw std::bad_alloc();
  }
  ~Deflater() { deflateEnd(&stream_); }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  /// Appends to `out`; `flush` is Z_FINISH or Z_SYNC_FLUSH. Returns false and appends nothing when the result
  /// would exceed `limit` bytes.
  bool run(std::span<const std::uint8_t> dictionary, std::span<const std::uint8_t> in, int flush,
           std::vector<std::uint8_t>& out, std::size_t limit) {
    deflateReset(&stream_);
    if (!dictionary.empty())
      deflateSetDictionary(&stream_, dictionary.data(), static_cast<uInt>(dictionary.size()));
    const std::size_t before = out.size();
    out.resize(before + limit);
    stream_.next_in = const_cast<Bytef*>(in.data());  // zlib only reads there
    stream_.avail_in = static_cast<uInt>(in.size());
    stream_.next_out = out.data() + before;
    stream_.avail_out = static_cast<uInt>(limit);
    const int result = deflate(&stream_, flush);
    const bool fits = flush == Z_FINISH ? result == Z_STREAM_END : result == Z_OK && stream_.avail_out > 0;
    out.resize(fits ? before + limit - stream_.avail_out : before);
    return fits;
  }

 private:
  z_stream stream_{};
};

/// RFC 1951 §3.2.4: appends the bytes uncompressed to a deflate stream that is at a byte border before and
/// after.
void appendStoredBlocks(std::span<const std::uint8_t> in, bool last, std::vector<std::uint8_t>& out) {
  do {
    const std::size_t size = std::min(in.size(), kLongestStoredBlock);
    const bool final = last && size == in.size();
    const auto low = static_cast<std::uint8_t>(size), high = static_cast<std::uint8_t>(size >> 8);
    out.insert(out.end(), {static_cast<std::uint8_t>(final ? 1 : 0), low, high,
                           static_cast<std::uint8_t>(~low), static_cast<std::uint8_t>(~high)});
    out.insert(out.end(), in.begin(), in.begin() + static_cast<std::ptrdiff_t>(size));
    in = in.subspan(size);
  } while (!in.empty());
}

std::uint32_t crcOf(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint32_t>(crc32_z(0, bytes.data(), bytes.size()));
}

/// A thread's tools, reused for each job.
struct Tools {
  Deflater deflater{kLevel};
  CompressibilityProbe probe;
};

void pack(Tools& tools, Piece& piece, std::span<std::uint8_t> input, std::vector<std::uint8_t>& output) {
  const std::span<std::uint8_t> bytes = input.subspan(piece.begin, piece.size);
  piece.crc = crcOf(bytes);
  piece.packed = bytes;
  piece.deflated = false;
  if (piece.deflate) {
    const std::size_t before = output.size();
    const bool promising = !tools.probe.incompressible(bytes);
    if (piece.part == Piece::Part::whole) {
      // Deflates only when the result is shorter.
      piece.deflated =
          promising && piece.size > 1 && tools.deflater.run({}, bytes, Z_FINISH, output, piece.size - 1);
    } else {
      const bool last = piece.part == Piece::Part::lastBlock;
      const auto dictionary = input.subspan(piece.begin - piece.dictionary, piece.dictionary);
      if (!promising ||
          !tools.deflater.run(dictionary, bytes, last ? Z_FINISH : Z_SYNC_FLUSH, output, piece.size + 16))
        appendStoredBlocks(bytes, last, output);
      piece.deflated = true;
    }
    if (piece.deflated) piece.packed = std::span(output).subspan(before);
  }
  if (piece.password) {
    piece.salt = freshSalt();
    AesEntry aes(*piece.password, piece.salt);
    piece.verifier = aes.verifier();
    aes.encrypt(piece.packed);
    piece.code = aes.code();
  }
}

}  // namespace

DeflateWorkers::DeflateWorkers() {
  const unsigned count = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
  threads_.reserve(count);
  try {
    for (unsigned i = 0; i < count; ++i) threads_.emplace_back([this] { work(); });
  } catch (const std::system_error&) {
    if (threads_.empty()) throw;  // fewer are enough
  }
}

DeflateWorkers::~DeflateWorkers() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  newJob_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void DeflateWorkers::submit(Job& job) {
  {
    const std::lock_guard lock(mutex_);
    job.done_ = false;
    job.failure_ = nullptr;
    queue_.push_back(&job);
  }
  newJob_.notify_one();
}

void DeflateWorkers::wait(Job& job) {
  std::unique_lock lock(mutex_);
  jobDone_.wait(lock, [&] { return job.done_; });
  if (job.failure_) std::rethrow_exception(job.failure_);
}

void DeflateWorkers::work() {
  LowerThreadPriority();
  std::optional<Tools> tools;
  std::unique_lock lock(mutex_);
  for (;;) {
    newJob_.wait(lock, [&] { return ending_ || !queue_.empty(); });
    if (ending_) return;
    Job& job = *queue_.front();
    queue_.pop_front();
    lock.unlock();
    try {
      if (!tools) tools.emplace();
      job.output_.clear();
      // The pieces' results point into it, so it must not be reallocated. Reserves each piece's size and the
      // little that deflate may add.
      job.output_.reserve(job.input.size() + 64 * (job.pieces.size() + 1));
      for (Piece& piece : job.pieces) pack(*tools, piece, job.input, job.output_);
    } catch (...) {
      job.failure_ = std::current_exception();
    }
    lock.lock();
    job.done_ = true;
    jobDone_.notify_all();
  }
}

struct CompressibilityProbe::Stream {
  Deflater deflater{kQuickLevel};
  std::vector<std::uint8_t> out;
};

CompressibilityProbe::CompressibilityProbe() : stream_(std::make_unique<Stream>()) {}
CompressibilityProbe::~CompressibilityProbe() = default;

bool CompressibilityProbe::sampleCompresses(std::span<const std::uint8_t> sample) {
  stream_->out.clear();
  return stream_->deflater.run({}, sample, Z_FINISH, stream_->out, sample.size() - sample.size() / 50);
}

bool CompressibilityProbe::incompressible(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < 4 * kSample) return false;
  for (int i = 0; i < 3; ++i) {
    // Samples at the quarters: the beginning often has a header unlike the rest.
    const std::size_t at = bytes.size() / 4 * static_cast<std::size_t>(i + 1) - kSample / 2;
    if (sampleCompresses(bytes.subspan(at, kSample))) return false;
  }
  return true;
}

std::uint32_t combineCrc(std::uint32_t first, std::uint32_t second, std::size_t size) {
  return static_cast<std::uint32_t>(crc32_combine(first, second, static_cast<z_off_t>(size)));
}

}  // namespace quillmoor::zip
