// Settings in the registry: one text value each.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace quillmoor {

/// Application and section under which all settings of this program lie.
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
};

/// Every setting, in the order in which they are read at start-up; `AsciiExts` comes last and is read by
/// those who need it. The odd spellings of some keys are those of the stored settings.
extern const std::array<SettingDefinition, 37> kSettings;

}  // namespace quillmoor
