// Damaged copies of a good file, the same ones every time.
#pragma once

#include <array>
#include <cstddef>
#include <random>
#include <string>

namespace quillmoor::testing {

/// Every prefix; every byte at its extremes; and `random` copies with a few random changes each.
template <typename Try>
void forEachMutation(const std::string& good, Try attempt, int random = 5000) {
  for (std::size_t length = 0; length < good.size(); ++length) attempt(good.substr(0, length));
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const char byte : {'\x00', '\x01', '\x7F', '\x80', '\xFF'}) {
      std::string bad = good;
      bad[at] = byte;
      attempt(bad);
    }
  }
  std::minstd_rand dice(4711);
  const auto upTo = [&](std::size_t n) { return dice() % n; };
  for (int i = 0; i < random; ++i) {
    std::string bad = good;
    for (std::size_t changes = 1 + upTo(4); changes > 0; --changes) {
      const std::size_t at = upTo(bad.size());
      switch (upTo(4)) {
        case 0:
          bad[at] = static_cast<char>(upTo(256));
          break;
        case 1:
          bad.insert(at, bad.substr(upTo(bad.size()), upTo(40)));
          break;
        case 2:
          bad.erase(at, upTo(8));
          break;
        default:
          bad.insert(at, 1, static_cast<char>(upTo(256)));
      }
      if (bad.empty()) bad = "x";
    }
    attempt(bad);
  }
}

}  // namespace quillmoor::testing
