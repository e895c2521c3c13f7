// Settings in the registry: one text value each.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace quillmoor {

/// Application and section of all settings of this program.
inline constexpr const char* kSettingsApplication = "Tarnick\\Quillmoor";
inline constexpr const char* kSettingsSection = "Settings";

/// The stored text, `defaultText` when there is none. Raises RegistryStoreError.
std::string ReadSetting(const std::string& application, const std::string& section, const std::string& key,
                        const std::string& defaultText);

/// Raises RegistryError when it cannot be written.
void WriteSetting(const std::string& application, const std::string& section, const std::string& key,
                  const std::string& text);

/// This program's settings.
std::string ReadSetting(const std::string& key, const std::string& defaultText);
void WriteSetting(const std::string& key, const std::string& text);

struct SettingDefinition {
  std::string_view key;
  enum class Kind { number, text } kind;
  std::string_view defaultText;
  /// Range of a number. The older settings accept every number.
  std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  std::int32_t highest = std::numeric_limits<std::int32_t>::max();
};

/// Every setting, in the order in which they are read at start-up; `AsciiExts` is read where it is needed.
/// The misspelt keys are those of stored settings.
extern const std::array<SettingDefinition, 39> kSettings;

/// Raises std::logic_error for a key that kSettings does not have.
const SettingDefinition& DefinitionOf(std::string_view key);

/// The number that a setting's stored text begins with, as ToLong rounds it. std::nullopt when it begins with
/// none or is outside the setting's range.
std::optional<std::int32_t> SettingNumber(const SettingDefinition& setting, std::string_view stored);

/// Why a stored text cannot be used for its setting and what is used instead, as one sentence; "" when it
/// can.
std::string SettingNote(const SettingDefinition& setting, std::string_view stored);

}  // namespace quillmoor
