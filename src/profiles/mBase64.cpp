#include "profiles/mBase64.h"

#include <array>
#include <cstdint>

namespace quillmoor::mBase64 {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kPadding = 64;
constexpr std::uint8_t kInvalid = 255;

constexpr std::array<std::uint8_t, 256> decodingTable() {
  std::array<std::uint8_t, 256> table{};
  table.fill(kInvalid);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  table['='] = kPadding;
  return table;
}
constexpr auto kTable = decodingTable();

}  // namespace

std::string Encode(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const auto byte = [&](std::size_t i) {
      return at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U;
    };
    const std::uint32_t group = byte(0) << 16 | byte(1) << 8 | byte(2);
    for (unsigned shift = 24; shift > 0; shift -= 6) text += kAlphabet[group >> (shift - 6) & 63];
  }
  const std::size_t missing = (3 - bytes.size() % 3) % 3;
  return text.replace(text.size() - missing, missing, missing, '=');
}

std::string Decode(std::string_view text) {
  for (const char c : text) {
    if (kTable[static_cast<unsigned char>(c)] == kInvalid) {
      throw DecodeError("The text is no Base64: it holds a character outside its alphabet.");
    }
  }
  std::string bytes;
  for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
    std::array<std::uint32_t, 4> value{};
    for (std::size_t i = 0; i < 4; ++i) value[i] = kTable[static_cast<unsigned char>(text[at + i])];
    const std::size_t keep = value[3] != kPadding ? 3 : value[2] != kPadding ? 2 : 1;
    const std::uint32_t group =
        (value[0] & 63) << 18 | (value[1] & 63) << 12 | (value[2] & 63) << 6 | (value[3] & 63);
    for (std::size_t i = 0; i < keep; ++i) bytes += static_cast<char>(group >> (16 - 8 * i) & 0xFF);
  }
  return bytes;
}

}  // namespace quillmoor::mBase64
