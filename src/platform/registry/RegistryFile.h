// The registry editor's export format, "Windows Registry Editor Version 5.00": parsing and formatting.
//
//   [HKEY_LOCAL_MACHINE\Software\Name]
//   "value"="text with \\ and \" escaped"
//   @="the default value"
//   "number"=dword:0000002a
//   "bytes"=hex:01,02,03                  (a backslash continues a long line)
//   "expandable"=hex(2):25,00,...        (UTF-16LE with its terminating zero)
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry/RegistryApi.h"

namespace quillmoor {

struct RegistryFileValue {
  std::string name;  // "" is the default value
  RegistryData data;
};

struct RegistryFileKey {
  std::string path;  // with the root's name
  std::vector<RegistryFileValue> values;
};

/// Raised for text that does not follow the format.
class RegistryFileError : public std::runtime_error {
 public:
  RegistryFileError(std::size_t line, const std::string& what) : std::runtime_error(what), line_(line) {}
  std::size_t line() const { return line_; }  // from 1

 private:
  std::size_t line_;
};

/// Keys in file order; duplicates are merged. Reads UTF-8, and UTF-16LE with a byte order mark, which the
/// registry editor writes; other bytes are read in the ANSI code page. "" has no keys.
std::vector<RegistryFileKey> parseRegistryFile(std::string_view bytes);

/// The file's bytes, from which parseRegistryFile reads the same keys: plain ASCII where possible, else
/// UTF-16LE with a byte order mark. A file without one is ANSI to the registry editor, even for text stored
/// as hex.
std::string formatRegistryFile(const std::vector<RegistryFileKey>& keys);

}  // namespace quillmoor
