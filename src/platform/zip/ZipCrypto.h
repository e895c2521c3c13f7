// Encryption of archive entries: AE-2 with AES-256. Ciphers and hashes are nettle's.
//
// Source: the AE-2 description that zip tools share (appended to in zip application note §7.2, method 99):
// keys and the two bytes that verify a password by PBKDF2-HMAC-SHA1 over 1,000 rounds; AES in counter mode,
// the counter little-endian from 1; the first ten bytes of an HMAC-SHA1 over the encrypted bytes behind them.
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
/// What encryption adds to an entry.
inline constexpr std::size_t kAesOverhead = kSaltSize + kVerifierSize + kCodeSize;

using Salt = std::array<std::uint8_t, kSaltSize>;

/// A salt that was never used before. Any thread.
Salt freshSalt();

/// One entry's cipher. An object belongs to one thread at a time; making one takes about a millisecond, as it
/// is meant to.
class AesEntry {
 public:
  AesEntry(std::string_view password, const Salt& salt);
  ~AesEntry();
  AesEntry(const AesEntry&) = delete;
  AesEntry& operator=(const AesEntry&) = delete;

  /// Stands behind the salt; in one of 65,536 a wrong password has the same.
  const std::array<std::uint8_t, kVerifierSize>& verifier() const { return verifier_; }

  /// The next bytes of the entry, in place.
  void encrypt(std::span<std::uint8_t> bytes);
  void decrypt(std::span<std::uint8_t> bytes);

  /// Over all that was encrypted or decrypted. To be called once, at the end.
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
