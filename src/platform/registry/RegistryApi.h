// The registry: keys below a few roots, each with named and typed values. Names are case-insensitive and keep
// their spelling; paths are separated by backslashes. Text is UTF-8.
//
// On Linux the registry is one file in the registry editor's export format: see RegistryFile.h.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillmoor {

/// Roots, with the system's handle values.
inline constexpr std::uint32_t HKEY_CLASSES_ROOT_VALUE = 0x80000000;
inline constexpr std::uint32_t HKEY_CURRENT_USER_VALUE = 0x80000001;
inline constexpr std::uint32_t HKEY_LOCAL_MACHINE_VALUE = 0x80000002;
inline constexpr std::uint32_t HKEY_USERS_VALUE = 0x80000003;
inline constexpr std::uint32_t HKEY_CURRENT_CONFIG_VALUE = 0x80000005;

/// "HKEY_LOCAL_MACHINE" and the like; "" when the number is not a root.
std::string RegistryRootName(std::uint32_t root);

enum class RegistryType : std::uint32_t { none = 0, text = 1, expandText = 2, binary = 3, dword = 4 };

/// A stored value. `bytes`: text without terminating zero, four little-endian bytes for a dword, else the raw
/// data.
struct RegistryData {
  RegistryType type = RegistryType::none;
  std::string bytes;
  bool operator==(const RegistryData&) const = default;
};

/// The registry cannot be read or written (a damaged file, a full disk, missing rights): `what()` names the
/// file and, if it is damaged, the line. Nothing was changed.
class RegistryStoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Each function raises RegistryStoreError, and takes a root and the path of a key below it.
namespace RegistryApi {

bool keyExists(std::uint32_t root, const std::string& path);
/// Creates the key and those above it that are missing.
void createKey(std::uint32_t root, const std::string& path);
/// False when the key is missing or has subkeys.
bool deleteKey(std::uint32_t root, const std::string& path);

/// Nullopt when key or value is missing. The name "" is the key's default value.
std::optional<RegistryData> queryValue(std::uint32_t root, const std::string& path, const std::string& name);
/// Creates a missing key. Writes nothing, and needs no right to write, when the value is already set.
void setValue(std::uint32_t root, const std::string& path, const std::string& name, const RegistryData& data);
/// False when the key is missing; a missing value is no error and needs no right to write.
bool deleteValue(std::uint32_t root, const std::string& path, const std::string& name);

/// Names in storage order.
std::vector<std::string> enumerateKeys(std::uint32_t root, const std::string& path);
std::vector<std::string> enumerateValues(std::uint32_t root, const std::string& path);

/// Replaces "%NAME%" by the environment variable, if it exists.
std::string expandEnvironment(const std::string& text);

}  // namespace RegistryApi
}  // namespace quillmoor
