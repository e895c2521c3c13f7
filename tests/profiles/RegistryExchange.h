// Values that move between the platforms as an export of the registry: what is stored on one must be read on
// the other.
#pragma once

#include <string>
#include <vector>

#include "platform/registry/RegistryFile.h"

namespace quillmoor::testing {

inline constexpr const char* kExchangePath = "Software\\Tarnick\\Quillmoor\\Exchange";

inline std::vector<RegistryFileValue> exchangedValues() {
  using enum RegistryType;
  std::string longText;
  for (int i = 0; i < 3000; ++i) longText += "/folder-" + std::to_string(i) + "|";
  return {
      {"Plain", {text, "12"}},
      {"Empty", {text, ""}},
      {"Quotes and \\ in the name", {text, "C:\\Program Files\\\"x\" y"}},
      {"Umlauts", {text, "K\xC3\xB6ln / \xE2\x82\xAC"}},
      {"Outside the code page", {text, "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80"}},
      {"Blanks", {text, "  a  "}},
      {"Semicolon", {text, "; no comment"}},
      {"Lines", {text, "one\r\ntwo"}},
      {"Long", {text, longText}},
      {"Reference", {expandText, "%TEMP%\\x"}},
      {"Number", {dword, std::string("\x2A\0\0\x80", 4)}},
      {"Bytes", {binary, std::string("\0\xFF\x10", 3)}},
      {"No bytes", {binary, ""}},
      {"", {text, "the default value"}},
  };
}

}  // namespace quillmoor::testing
