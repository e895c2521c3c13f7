#include "platform/zip/ZipCrypto.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor::zip {
namespace {

std::vector<std::uint8_t> bytesOf(std::string_view hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2)
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
  return bytes;
}

// An entry that another program encrypted.
constexpr std::string_view kPlain = "The quick brown fox jumps over the lazy dog, twice.";
constexpr std::string_view kPassword = "correct horse";
constexpr std::string_view kSalt = "5fc7bfaad108261436cb085db26224b5";
constexpr std::string_view kVerifier = "f697";
constexpr std::string_view kEncrypted =
    "f701a85a46719a5bc2634b24b592b0ddb9d5f684234358687e06fdfb4d4407472b932a14103d674688b176adb3f21e91d3c3e4";
constexpr std::string_view kCode = "ef6a60029274797035b5";

TEST(ZipCrypto, EncryptsAsOtherProgramsDoInPiecesOfAnySize) {
  Salt salt;
  std::ranges::copy(bytesOf(kSalt), salt.begin());
  for (std::size_t piece = 1; piece <= kPlain.size(); ++piece) {
    AesEntry aes(kPassword, salt);
    std::vector<std::uint8_t> bytes(kPlain.begin(), kPlain.end());
    for (std::size_t at = 0; at < bytes.size(); at += piece)
      aes.encrypt(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)));
    EXPECT_EQ(bytes, bytesOf(kEncrypted)) << piece;
    EXPECT_TRUE(std::ranges::equal(aes.verifier(), bytesOf(kVerifier)));
    EXPECT_TRUE(std::ranges::equal(aes.code(), bytesOf(kCode)));
  }
}

TEST(ZipCrypto, NeverUsesASaltTwice) {
  const Salt first = freshSalt();
  EXPECT_NE(first, freshSalt());
  EXPECT_NE(first, Salt{});
}

}  // namespace
}  // namespace quillmoor::zip
