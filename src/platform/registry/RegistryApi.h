// The registry: keys below a few roots, each with named and typed values. Names are compared without regard
// to case and keep the case they were made with; paths are separated by backslashes. Text is UTF-8.
//
// On Linux the registry is one file in the registry editor's export format: see RegistryFile.h.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillmoor {

/// Roots, by the handle values of the system.
inline constexpr std::uint32_t HKEY_CLASSES_ROOT_VALUE = 0x80000000;
inline constexpr std::uint32_t HKEY_CURRENT_USER_VALUE = 0x80000001;
inline constexpr std::uint32_t HKEY_LOCAL_MACHINE_VALUE = 0x80000002;
inline constexpr std::uint32_t HKEY_USERS_VALUE = 0x80000003;
inline constexpr std::uint32_t HKEY_CURRENT_CONFIG_VALUE = 0x80000005;

/// "HKEY_LOCAL_MACHINE" and the like; "" for a number that is no root.
std::string RegistryRootName(std::uint32_t root);

enum class RegistryType : std::uint32_t { none = 0, text = 1, expandText = 2, binary = 3, dword = 4 };

/// A stored value. `bytes`: text without its terminating zero, four bytes little-endian for a dword, else as
/// is.
struct RegistryData {
  RegistryType type = RegistryType::none;
  std::string bytes;
  bool operator==(const RegistryData&) const = default;
};

/// The registry as a whole cannot be read or written (a damaged file, a full disk, no right to it): `what()`
/// names the file and, where it is damaged, the line. Nothing was changed.
class RegistryStoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Each function raises RegistryStoreError, and takes a root and the path of a key below it.
namespace RegistryApi {

bool keyExists(std::uint32_t root, const std::string& path);
/// Creates the key and those above it that are missing.
void createKey(std::uint32_t root, const std::string& path);
/// False when there is no such key, or it still has keys below it.
bool deleteKey(std::uint32_t root, const std::string& path);

/// Nothing when key or value is missing. The value "" is the key's default value.
std::optional<RegistryData> queryValue(std::uint32_t root, const std::string& path, const std::string& name);
/// Creates a missing key. Nothing is written, and no right to it needed, where the value is so already.
void setValue(std::uint32_t root, const std::string& path, const std::string& name, const RegistryData& data);
/// False when the key is missing; a missing value is no failure and needs no right to write.
bool deleteValue(std::uint32_t root, const std::string& path, const std::string& name);

/// Names in the order in which they are stored.
std::vector<std::string> enumerateKeys(std::uint32_t root, const std::string& path);
std::vector<std::string> enumerateValues(std::uint32_t root, const std::string& path);

/// Replaces "%NAME%" by that environment variable where there is one.
std::string expandEnvironment(const std::string& text);

}  // namespace RegistryApi
}  // namespace quillmoor
