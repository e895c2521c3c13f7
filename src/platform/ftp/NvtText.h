// Line ends of an ASCII transfer: from the network's CR LF (RFC 959 §3.1.1.1) to the platform's.
#pragma once

#include <cstddef>

namespace quillmoor {

enum class LineEnd { lf, crLf };

/// How lines end in files on this platform.
LineEnd platformLineEnd();

/// Converts a stream chunk by chunk. CR LF becomes the line end; a CR or LF standing alone stays as it is
/// when lines end in LF; when they end in CR LF the stream is left untouched, for it has that form already.
class NvtText {
 public:
  explicit NvtText(LineEnd lineEnd) : lineEnd_(lineEnd) {}

  /// Converts `size` bytes in place and returns how many are left. One CR that ended the chunk before may be
  /// written in front of them, so `data[-1]` must be writable.
  struct Converted {
    char* data;
    std::size_t size;
  };
  Converted convert(char* data, std::size_t size);

  /// True when the stream ended behind a CR that `convert` held back; the caller writes it.
  bool heldCarriageReturn() const { return held_; }

 private:
  LineEnd lineEnd_;
  bool held_ = false;
};

}  // namespace quillmoor
