#include "profiles/mRC4.h"

#include <array>
#include <cstdint>
#include <numeric>
#include <string_view>
#include <utility>

#include "platform/system/CodePage.h"
#include "profiles/mBase64.h"

namespace quillmoor::mRC4 {
namespace {

constexpr std::string_view kKey = "q7!x~2Lm^w9%d_r";

/// RC4 is its own inverse. Each call starts with a fresh state.
std::string applyKeystream(std::string bytes) {
  std::array<std::uint8_t, 256> s{};
  std::iota(s.begin(), s.end(), std::uint8_t{0});
  std::uint8_t j = 0;
  for (std::size_t i = 0; i < s.size(); ++i) {
    j = static_cast<std::uint8_t>(j + s[i] + static_cast<unsigned char>(kKey[i % kKey.size()]));
    std::swap(s[i], s[j]);
  }
  std::uint8_t i = 0;
  j = 0;
  for (char& byte : bytes) {
    i = static_cast<std::uint8_t>(i + 1);
    j = static_cast<std::uint8_t>(j + s[i]);
    std::swap(s[i], s[j]);
    const auto k = s[static_cast<std::uint8_t>(s[i] + s[j])];
    byte = static_cast<char>(static_cast<unsigned char>(byte) ^ k);
  }
  return bytes;
}

}  // namespace

std::string Encipher(const std::string& plainText) {
  return mBase64::Encode(applyKeystream(ToAnsi(plainText)));
}

std::string Decipher(const std::string& enciphered) {
  return FromAnsi(applyKeystream(mBase64::Decode(ToAnsi(enciphered))));
}

}  // namespace quillmoor::mRC4
