// Compression on worker threads: jobs go in, and come out when the caller asks for them, in whatever order it
// likes.
//
// A large file is cut into blocks that are deflated apart from each other. Each is primed with the 32 KiB in
// front of it (RFC 1951 allows references across blocks) and ends on a byte border, so that the pieces put
// together are one stream.
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

/// How far back deflate refers.
inline constexpr std::size_t kDictionary = std::size_t{32} << 10;
/// Longest piece.
inline constexpr std::size_t kBlock = std::size_t{256} << 10;

/// What shall become of some bytes: of a whole file, or of a block of one.
struct Piece {
  enum class Part { whole, block, lastBlock };

  Part part = Part::whole;
  /// `whole`: the shorter of deflated and stored is taken in any case, and `deflate` only allows it.
  bool deflate = true;
  std::size_t begin = 0;  ///< in the job's input
  std::size_t size = 0;
  std::size_t dictionary = 0;  ///< bytes in front of `begin` that precede these in the file
  /// Encrypts a whole file; the blocks of a larger one are encrypted in their order, not here. Must outlive
  /// the job.
  std::optional<std::string_view> password;

  // The outcome.
  bool deflated = false;
  std::uint32_t crc = 0;           ///< of the bytes as they came
  std::span<std::uint8_t> packed;  ///< lies in the job
  Salt salt{};                     ///< these three when encrypted
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
  /// Jobs not begun are dropped; those under way are waited for.
  ~DeflateWorkers();
  DeflateWorkers(const DeflateWorkers&) = delete;
  DeflateWorkers& operator=(const DeflateWorkers&) = delete;

  std::size_t threads() const { return threads_.size(); }

  /// Takes the job on. It must stay where it is, untouched, until `wait` has returned or this object is gone.
  void submit(Job& job);
  /// Blocks until the job is done, and raises what has gone wrong in it.
  void wait(Job& job);

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable newJob_, jobDone_;
  std::deque<Job*> queue_;
  bool ending_ = false;
  std::vector<std::thread> threads_;
};

/// Would deflate gain next to nothing on these bytes? Judged by samples, in a hundredth of the time.
class Judge {
 public:
  Judge();
  ~Judge();
  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  bool incompressible(std::span<const std::uint8_t> bytes);

 private:
  bool sampleCompresses(std::span<const std::uint8_t> sample);
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

/// CRC-32 of two runs of bytes put together; `size` is that of the second, a piece's at most.
std::uint32_t combineCrc(std::uint32_t first, std::uint32_t second, std::size_t size);

}  // namespace quillmoor::zip
