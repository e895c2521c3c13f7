// Compression on worker threads: jobs are submitted, and collected in any order.
//
// A large file is split into blocks that are deflated independently. Each is primed with the 32 KiB before it
// (RFC 1951 allows references across blocks) and ends at a byte border, so that their concatenation is one
// stream.
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/zip/ZipCrypto.h"

namespace quillmoor::zip {

/// Maximum distance of deflate's references.
inline constexpr std::size_t kDictionary = std::size_t{32} << 10;
/// Maximum size of a piece.
inline constexpr std::size_t kBlock = std::size_t{256} << 10;

/// What to do with some bytes: a whole file, or a block of one.
struct Piece {
  enum class Part { whole, block, lastBlock };

  Part part = Part::whole;
  /// `whole`: the shorter of deflated and stored is used anyway; `deflate` only permits deflating.
  bool deflate = true;
  std::size_t begin = 0;  ///< in the job's input
  std::size_t size = 0;
  std::size_t dictionary = 0;  ///< bytes before `begin` that precede these in the file
  /// Encrypts a whole file; blocks of a larger one are encrypted later, in order. Must outlive the job.
  std::optional<std::string_view> password;

  // Results.
  bool deflated = false;
  std::uint32_t crc = 0;           ///< of the uncompressed bytes
  std::span<std::uint8_t> packed;  ///< points into the job
  Salt salt{};                     ///< these three only when encrypted
  std::array<std::uint8_t, kVerifierSize> verifier{};
  std::array<std::uint8_t, kCodeSize> code{};
};

struct Job {
  std::vector<std::uint8_t> input;
  std::vector<Piece> pieces;

 private:
  friend class DeflateWorkers;
  std::vector<std::uint8_t> output_;
  bool done_ = false;
  std::exception_ptr failure_;
};

class DeflateWorkers {
 public:
  DeflateWorkers();
  /// Drops jobs that have not started; waits for those in progress.
  ~DeflateWorkers();
  DeflateWorkers(const DeflateWorkers&) = delete;
  DeflateWorkers& operator=(const DeflateWorkers&) = delete;

  std::size_t threads() const { return threads_.size(); }

  /// Queues the job. It must not be moved or touched until `wait` has returned or this object is destroyed.
  void submit(Job& job);
  /// Blocks until the job is done; raises the job's exception, if any.
  void wait(Job& job);

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable newJob_, jobDone_;
  std::deque<Job*> queue_;
  bool ending_ = false;
  std::vector<std::thread> threads_;
};

/// Checks by samples whether deflate would gain next to nothing, in a hundredth of its time.
class CompressibilityProbe {
 public:
  CompressibilityProbe();
  ~CompressibilityProbe();
  CompressibilityProbe(const CompressibilityProbe&) = delete;
  CompressibilityProbe& operator=(const CompressibilityProbe&) = delete;

  bool incompressible(std::span<const std::uint8_t> bytes);

 private:
  bool sampleCompresses(std::span<const std::uint8_t> sample);
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

/// CRC-32 of two concatenated byte sequences; `size` is that of the second, at most a piece's.
std::uint32_t combineCrc(std::uint32_t first, std::uint32_t second, std::size_t size);

}  // namespace quillmoor::zip
