#include "platform/registry/RegistryApi.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "platform/files/FolderLock.h"
#include "platform/files/PrivateFile.h"
#include "platform/files/WorkFolder.h"
#include "platform/registry/RegistryFile.h"
#include "platform/registry/posix/AutostartEntry.h"
#include "platform/system/posix/UserFolders.h"

namespace quillmoor {
namespace {

// Far more than any settings; a larger file of that name is not read into memory.
constexpr std::uintmax_t kLargestFile = std::uintmax_t{16} << 20;
constexpr const char* kRunKey = "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";

using Keys = std::vector<RegistryFileKey>;

bool sameName(const std::string& a, const std::string& b) {
  return ::strcasecmp(a.c_str(), b.c_str()) == 0;
}

std::filesystem::path storeFile() {
  try {
    return UserConfigurationFolder() / "quillmoor" / "registry.reg";
  } catch (const std::exception& error) {
    throw RegistryStoreError(error.what());
  }
}

/// Saves a copy of the damaged file beside it, once, for whoever repairs or replaces it.
void keepDamaged(const std::filesystem::path& file) {
  std::error_code ignored;
  auto copy = file;
  copy += ".damaged";
  std::filesystem::copy_file(file, copy, std::filesystem::copy_options::skip_existing, ignored);
  std::filesystem::permissions(copy, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
                               ignored);
}

Keys load() {
  const std::filesystem::path file = storeFile();
  std::error_code error;
  const auto size = std::filesystem::file_size(file, error);
  if (error == std::errc::no_such_file_or_directory) return {};
  std::ifstream stream(file, std::ios::binary);
  if (error || !stream || size > kLargestFile) {
    throw RegistryStoreError("The settings file " + file.string() + " cannot be read" +
                             (error ? ": " + error.message() : "") + ".");
  }
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  try {
    return parseRegistryFile(bytes);
  } catch (const RegistryFileError& damage) {
    keepDamaged(file);
    throw RegistryStoreError("The settings file " + file.string() + " is damaged in line " +
                             std::to_string(damage.line()) + ": " + damage.what() +
                             ". It was not changed; repair it, or move it away to start with the defaults.");
  }
}

/// Loads the keys, calls `change`, and writes them if it returns true.
template <class Change>
void modify(Change change) {
  const std::filesystem::path file = storeFile();
  try {
    MakePrivateFolder(file.parent_path());
    const FolderLock lock(file.parent_path());  // held from reading the file until it is replaced
    Keys keys = load();
    if (!change(keys)) return;
    RemoveStaleTemporaries(file.parent_path());
    WritePrivateFile(file, formatRegistryFile(keys), AtomicFile::Survives::power);
  } catch (const std::system_error& error) {
    throw RegistryStoreError(std::string("The settings cannot be written: ") + error.what() + ".");
  }
}

std::string fullPath(std::uint32_t root, const std::string& path) {
  std::string full = RegistryRootName(root);
  if (full.empty()) throw RegistryStoreError("There is no registry root " + std::to_string(root) + ".");
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find('\\', at), path.size());
    if (end != at) full.append("\\").append(path, at, end - at);
    at = end + 1;
  }
  if (full.find_first_of("\r\n]") != std::string::npos) {
    throw RegistryStoreError("\"" + path + "\" cannot be the name of a registry key.");
  }
  return full;
}

Keys::iterator findKey(Keys& keys, const std::string& full) {
  return std::find_if(keys.begin(), keys.end(), [&](const auto& key) { return sameName(key.path, full); });
}

bool isBelow(const std::string& path, const std::string& full) {
  return path.size() > full.size() + 1 && path[full.size()] == '\\' &&
         ::strncasecmp(path.c_str(), full.c_str(), full.size()) == 0;
}

/// A key exists when the file has it or a subkey: the registry editor omits empty ones.
bool exists(const Keys& keys, const std::string& full) {
  return std::any_of(keys.begin(), keys.end(),
                     [&](const auto& key) { return sameName(key.path, full) || isBelow(key.path, full); });
}

template <class Change>
void updateDesktop(Change change) {
  try {
    change();
  } catch (const std::exception& error) {
    throw RegistryStoreError(
        std::string("The registry was updated, but the desktop's autostart entry was not: ") + error.what() +
        ".");
  }
}

std::vector<RegistryFileValue>::iterator findValue(RegistryFileKey& key, const std::string& name) {
  return std::find_if(key.values.begin(), key.values.end(),
                      [&](const auto& value) { return sameName(value.name, name); });
}

}  // namespace

namespace RegistryApi {

bool keyExists(std::uint32_t root, const std::string& path) {
  return exists(load(), fullPath(root, path));
}

void createKey(std::uint32_t root, const std::string& path) {
  const std::string full = fullPath(root, path);
  modify([&](Keys& keys) {
    if (findKey(keys, full) != keys.end()) return false;
    keys.push_back({full, {}});
    return true;
  });
}

bool deleteKey(std::uint32_t root, const std::string& path) {
  const std::string full = fullPath(root, path);
  bool deleted = false;
  modify([&](Keys& keys) {
    const auto key = findKey(keys, full);
    const bool hasChildren =
        std::any_of(keys.begin(), keys.end(), [&](const auto& k) { return isBelow(k.path, full); });
    if (key == keys.end() || hasChildren) return false;
    keys.erase(key);
    deleted = true;
    return true;
  });
  return deleted;
}

std::optional<RegistryData> queryValue(std::uint32_t root, const std::string& path, const std::string& name) {
  Keys keys = load();
  const auto key = findKey(keys, fullPath(root, path));
  if (key == keys.end()) return std::nullopt;
  const auto value = findValue(*key, name);
  if (value == key->values.end()) return std::nullopt;
  return std::move(value->data);
}

void setValue(std::uint32_t root, const std::string& path, const std::string& name,
              const RegistryData& data) {
  const std::string full = fullPath(root, path);
  if (queryValue(root, path, name) != data) {
    modify([&](Keys& keys) {
      auto key = findKey(keys, full);
      if (key == keys.end()) key = keys.insert(keys.end(), {full, {}});
      const auto value = findValue(*key, name);
      if (value == key->values.end()) {
        key->values.push_back({name, data});
      } else {
        value->data = data;
      }
      return true;
    });
  }
  const bool expands = data.type == RegistryType::expandText;
  if (!sameName(full, kRunKey) || (!expands && data.type != RegistryType::text)) return;
  updateDesktop([&] { WriteAutostartEntry(name, expands ? expandEnvironment(data.bytes) : data.bytes); });
}

bool deleteValue(std::uint32_t root, const std::string& path, const std::string& name) {
  const std::string full = fullPath(root, path);
  if (queryValue(root, path, name)) {
    modify([&](Keys& keys) {
      const auto key = findKey(keys, full);
      if (key == keys.end()) return false;
      const auto value = findValue(*key, name);
      if (value == key->values.end()) return false;
      key->values.erase(value);
      return true;
    });
  }
  if (sameName(full, kRunKey)) updateDesktop([&] { RemoveAutostartEntry(name); });
  return keyExists(root, path);
}

std::vector<std::string> enumerateKeys(std::uint32_t root, const std::string& path) {
  const std::string full = fullPath(root, path);
  std::vector<std::string> names;
  for (const auto& key : load()) {
    if (!isBelow(key.path, full)) continue;
    const std::size_t begin = full.size() + 1;
    std::string name = key.path.substr(begin, key.path.find('\\', begin) - begin);
    const bool known =
        std::any_of(names.begin(), names.end(), [&](const auto& n) { return sameName(n, name); });
    if (!known) names.push_back(std::move(name));
  }
  return names;
}

std::vector<std::string> enumerateValues(std::uint32_t root, const std::string& path) {
  std::vector<std::string> names;
  Keys keys = load();
  const auto key = findKey(keys, fullPath(root, path));
  if (key == keys.end()) return names;
  for (const auto& value : key->values) names.push_back(value.name);
  return names;
}

std::string expandEnvironment(const std::string& text) {
  std::string expanded;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t close = text[at] == '%' ? text.find('%', at + 1) : std::string::npos;
    const char* const value =
        close == std::string::npos ? nullptr : std::getenv(text.substr(at + 1, close - at - 1).c_str());
    if (value) {
      expanded += value;
      at = close + 1;
    } else {
      expanded += text[at++];
    }
  }
  return expanded;
}

}  // namespace RegistryApi
}  // namespace quillmoor
