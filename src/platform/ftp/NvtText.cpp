#include "platform/ftp/NvtText.h"

#include <cstring>

namespace quillmoor {

NvtText::Converted NvtText::convert(char* data, std::size_t size) {
  if (lineEnd_ == LineEnd::crLf || size == 0) return {data, size};
  char* const end = data + size;
  char* begin = data;
  if (held_ && *data != '\n') *--begin = '\r';
  held_ = false;

  char* out = begin;
  char* in = begin;
  while (in != end) {
    auto* cr = static_cast<char*>(std::memchr(in, '\r', static_cast<std::size_t>(end - in)));
    char* const stop = cr ? cr : end;
    const auto length = static_cast<std::size_t>(stop - in);
    if (out != in) std::memmove(out, in, length);
    out += length;
    in = stop;
    if (!cr) break;
    if (cr + 1 == end) {
      held_ = true;
      break;
    }
    if (cr[1] != '\n') *out++ = '\r';
    in = cr + 1;
  }
  return {begin, static_cast<std::size_t>(out - begin)};
}

}  // namespace quillmoor
