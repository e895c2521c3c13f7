// The code page Windows-1252, used by many files on every system.
#pragma once

#include <array>

namespace quillmoor {

/// Its characters from 0x80 to 0x9F; all others equal ISO 8859-1. The five undefined bytes map to the C1
/// controls of the same number, as the Windows functions do.
inline constexpr std::array<char16_t, 32> kWindows1252Upper = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char32_t FromWindows1252(unsigned char byte) {
  return byte >= 0x80 && byte < 0xA0 ? kWindows1252Upper[byte - 0x80U] : byte;
}

}  // namespace quillmoor
