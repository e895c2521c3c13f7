// Line ends of an ASCII transfer: converts the network's CR LF (RFC 959 §3.1.1.1) to the platform's.
#pragma once

#include <cstddef>

namespace quillmoor {

enum class LineEnd { lf, crLf };

/// The line end of files on this platform.
LineEnd platformLineEnd();

/// Converts a stream chunk by chunk. When lines end in LF, CR LF becomes LF and a lone CR or LF is kept; when
/// they end in CR LF, the stream is unchanged.
class NvtText {
 public:
  explicit NvtText(LineEnd lineEnd) : lineEnd_(lineEnd) {}

  /// Converts `size` bytes in place and returns the rest. A CR that ended the previous chunk may be written
  /// in front of them, so `data[-1]` must be writable.
  struct Converted {
    char* data;
    std::size_t size;
  };
  Converted convert(char* data, std::size_t size);

  /// True when the stream ended after a CR that `convert` held back; the caller writes it.
  bool heldCarriageReturn() const { return held_; }

 private:
  LineEnd lineEnd_;
  bool held_ = false;
};

}  // namespace quillmoor
