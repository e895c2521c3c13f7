#include "platform/zip/ZipCrypto.h"

#include <nettle/aes.h>
#include <nettle/hmac.h>
#include <nettle/pbkdf2.h>

#include <algorithm>
#include <random>

namespace quillmoor::zip {
namespace {

constexpr std::size_t kKeySize = AES256_KEY_SIZE;
constexpr unsigned kRounds = 1000;

}  // namespace

struct AesEntry::State {
  aes256_ctx cipher;
  hmac_sha1_ctx hash;
};

Salt freshSalt() {
  std::random_device random;  // the system's random source
  Salt salt;
  for (std::size_t i = 0; i < salt.size(); i += 4) {
    const std::uint32_t four = random();
    for (std::size_t j = 0; j < 4; ++j) salt[i + j] = static_cast<std::uint8_t>(four >> (8 * j));
  }
  return salt;
}

AesEntry::AesEntry(std::string_view password, const Salt& salt) : state_(std::make_unique<State>()) {
  // Cipher key, authentication key, verifier.
  std::array<std::uint8_t, 2 * kKeySize + kVerifierSize> keys{};
  pbkdf2_hmac_sha1(password.size(), reinterpret_cast<const std::uint8_t*>(password.data()), kRounds,
                   salt.size(), salt.data(), keys.size(), keys.data());
  aes256_set_encrypt_key(&state_->cipher, keys.data());
  hmac_sha1_set_key(&state_->hash, kKeySize, keys.data() + kKeySize);
  std::copy_n(keys.end() - kVerifierSize, kVerifierSize, verifier_.begin());
}

AesEntry::~AesEntry() = default;

void AesEntry::applyKeyStream(std::span<std::uint8_t> bytes) {
  while (!bytes.empty()) {
    if (streamUsed_ == stream_.size()) {
      // The library's counter mode is big-endian, so the counter blocks are made here.
      for (std::size_t block = 0; block < stream_.size(); block += AES_BLOCK_SIZE, ++counter_) {
        for (std::size_t i = 0; i < AES_BLOCK_SIZE; ++i)
          stream_[block + i] = static_cast<std::uint8_t>(i < 8 ? counter_ >> (8 * i) : 0);
      }
      aes256_encrypt(&state_->cipher, stream_.size(), stream_.data(), stream_.data());
      streamUsed_ = 0;
    }
    const std::size_t piece = std::min(bytes.size(), stream_.size() - streamUsed_);
    for (std::size_t i = 0; i < piece; ++i)
      bytes[i] = static_cast<std::uint8_t>(bytes[i] ^ stream_[streamUsed_ + i]);
    streamUsed_ += piece;
    bytes = bytes.subspan(piece);
  }
}

void AesEntry::encrypt(std::span<std::uint8_t> bytes) {
  applyKeyStream(bytes);
  hmac_sha1_update(&state_->hash, bytes.size(), bytes.data());
}

void AesEntry::decrypt(std::span<std::uint8_t> bytes) {
  hmac_sha1_update(&state_->hash, bytes.size(), bytes.data());
  applyKeyStream(bytes);
}

std::array<std::uint8_t, kCodeSize> AesEntry::code() {
  std::array<std::uint8_t, kCodeSize> code{};
  hmac_sha1_digest(&state_->hash, code.size(), code.data());
  return code;
}

}  // namespace quillmoor::zip
