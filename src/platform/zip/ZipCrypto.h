// Encryption of archive entries: AE-2 with AES-256. Ciphers and hashes are nettle's.
//
// Source: the AE-2 description that zip tools share (see zip application note §7.2, method 99): keys and a
// two-byte password verifier by PBKDF2-HMAC-SHA1 with 1,000 rounds; AES in counter mode, the counter
// little-endian from 1; then the first ten bytes of an HMAC-SHA1 over the encrypted bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace quillmoor::zip {

inline constexpr std::size_t kSaltSize = 16;
inline constexpr std::size_t kVerifierSize = 2;
inline constexpr std::size_t kCodeSize = 10;
/// The bytes that encryption adds to an entry.
inline constexpr std::size_t kAesOverhead = kSaltSize + kVerifierSize + kCodeSize;

using Salt = std::array<std::uint8_t, kSaltSize>;

/// A fresh random salt. Thread-safe.
Salt freshSalt();

/// The cipher of one entry. Used by one thread at a time; construction takes about a millisecond, by design
/// of the key derivation.
class AesEntry {
 public:
  AesEntry(std::string_view password, const Salt& salt);
  ~AesEntry();
  AesEntry(const AesEntry&) = delete;
  AesEntry& operator=(const AesEntry&) = delete;

  /// Follows the salt; a wrong password has the same in one of 65,536 cases.
  const std::array<std::uint8_t, kVerifierSize>& verifier() const { return verifier_; }

  /// Processes the next bytes of the entry in place.
  void encrypt(std::span<std::uint8_t> bytes);
  void decrypt(std::span<std::uint8_t> bytes);

  /// The authentication code of all bytes processed. Call it once, at the end.
  std::array<std::uint8_t, kCodeSize> code();

 private:
  void applyKeyStream(std::span<std::uint8_t> bytes);

  struct State;
  std::unique_ptr<State> state_;
  std::array<std::uint8_t, kVerifierSize> verifier_{};
  std::array<std::uint8_t, 4096> stream_{};
  std::size_t streamUsed_ = stream_.size();
  std::uint64_t counter_ = 1;
};

}  // namespace quillmoor::zip
