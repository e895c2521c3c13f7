// What the fuzzers share. Each tries any bytes at all on one reader, which must return what it promises or
// raise its own error, never anything else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// Ends the program unless the condition holds; the fuzzing library then keeps the input.
inline void require(bool holds) {
  if (!holds) std::abort();
}

/// What a fuzzer does with one input.
void tryInput(std::string_view input);

}  // namespace quillmoor

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quillmoor::tryInput({reinterpret_cast<const char*>(data), size});
  return 0;
}
