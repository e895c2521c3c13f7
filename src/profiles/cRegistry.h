// One value or key of the registry: set the properties, perform one operation.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "profiles/RegistryError.h"

namespace quillmoor {

/// What a registry value can hold: nothing, text, bytes, or a number of 16 or 32 bits.
using RegistryValue =
    std::variant<std::monostate, std::string, std::vector<std::uint8_t>, std::int16_t, std::int32_t>;

/// Operations that change something raise RegistryError when they fail. Any operation raises
/// RegistryStoreError when the registry as a whole cannot be read.
class cRegistry {
 public:
  std::uint32_t ClassKey = 0;   // a root by its handle value, HKEY_LOCAL_MACHINE_VALUE and so on
  std::string SectionKey;       // path below the root, separated by backslashes
  std::string ValueKey;         // name of the value
  std::uint32_t ValueType = 1;  // 1 REG_SZ, 2 REG_EXPAND_SZ, 3 REG_BINARY, 4 REG_DWORD
  RegistryValue Default;        // the result of reading a missing value

  /// Reads the value: text (environment references expanded where it was stored as expandable), bytes, or a
  /// 32-bit number. `Default` when key or value is missing.
  RegistryValue Value() const;

  /// Writes the value, creating the key. Text that holds an environment reference is stored as REG_EXPAND_SZ,
  /// other text as REG_SZ, whichever of the two ValueType names. REG_BINARY takes bytes, REG_DWORD a number.
  void SetValue(const RegistryValue& value);

  bool KeyExists() const;
  void CreateKey();
  void DeleteKey();
  /// Deletes the value ValueKey. A missing value is no failure, a missing key is one.
  void DeleteValue();
  std::vector<std::string> EnumerateValues() const;
  std::vector<std::string> EnumerateSections() const;

  /// Defines the file class `className` with the verbs open, print, add and new, and its icon.
  void CreateEXEAssociation(const std::string& programPath, const std::string& className, int iconIndex = 0);
  /// Adds verbs to the class defined before: name, text and command, and so on. An empty list, or one whose
  /// length is no multiple of three, is an error.
  void CreateAdditionalEXEAssociations(const std::vector<std::string>& namesTextsCommands);

 private:
  [[noreturn]] void raise(const std::string& description, const char* reason = nullptr) const;
  std::string place() const;

  std::string className_;
};

}  // namespace quillmoor
