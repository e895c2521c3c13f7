#include "platform/registry/RegistryApi.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/system/windows/SystemError.h"
#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

// Maximum length of a value name; key names have at most 255 characters (Registry Element Size Limits).
constexpr std::size_t kLongestName = 16'383;

HKEY rootKey(std::uint32_t root) {
  if (RegistryRootName(root).empty()) {
    throw RegistryStoreError("There is no registry root " + std::to_string(root) + ".");
  }
  // Predefined handles are sign-extended 32-bit numbers.
  return reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<std::int32_t>(root)));
}

/// The key or value does not exist: a result, not a failure.
bool isMissing(LSTATUS status) {
  return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND || status == ERROR_BAD_PATHNAME;
}

[[noreturn]] void fail(const std::string& what, LSTATUS status) {
  throw RegistryStoreError(what + ": " + SystemErrorText(static_cast<unsigned long>(status)));
}

class Key {
 public:
  Key() = default;
  ~Key() {
    if (key_) ::RegCloseKey(key_);
  }
  Key(Key&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
  Key& operator=(Key&&) = delete;

  explicit operator bool() const { return key_ != nullptr; }
  HKEY get() const { return key_; }
  HKEY* put() { return &key_; }

 private:
  HKEY key_ = nullptr;
};

std::string shownKey(std::uint32_t root, const std::string& path) {
  return RegistryRootName(root) + "\\" + path;
}

/// An empty Key when it is missing.
Key open(std::uint32_t root, const std::string& path, REGSAM access) {
  Key key;
  const LSTATUS status = ::RegOpenKeyExW(rootKey(root), Widen(path).c_str(), 0, access, key.put());
  if (status != ERROR_SUCCESS && !isMissing(status))
    fail("The key " + shownKey(root, path) + " cannot be opened", status);
  return key;
}

Key create(std::uint32_t root, const std::string& path) {
  Key key;
  const LSTATUS status =
      ::RegCreateKeyExW(rootKey(root), Widen(path).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
  if (status != ERROR_SUCCESS) fail("The key " + shownKey(root, path) + " cannot be created", status);
  return key;
}

bool isText(RegistryType type) {
  return type == RegistryType::text || type == RegistryType::expandText;
}

/// Fetches names one by one until the system reports that there are no more.
template <class Next>
std::vector<std::string> enumerate(const Key& key, Next next) {
  std::vector<std::string> names;
  if (!key) return names;
  std::wstring name(kLongestName + 1, L'\0');
  for (DWORD index = 0;; ++index) {
    auto length = static_cast<DWORD>(name.size());
    const LSTATUS status = next(key.get(), index, name.data(), &length);
    if (status == ERROR_NO_MORE_ITEMS) return names;
    if (status != ERROR_SUCCESS) fail("The names of a key cannot be read", status);
    names.push_back(Narrow(std::wstring_view(name).substr(0, length)));
  }
}

}  // namespace

namespace RegistryApi {

bool keyExists(std::uint32_t root, const std::string& path) {
  return static_cast<bool>(open(root, path, KEY_READ));
}

void createKey(std::uint32_t root, const std::string& path) {
  create(root, path);
}

bool deleteKey(std::uint32_t root, const std::string& path) {
  const Key key = open(root, path, KEY_READ);
  DWORD below = 0;
  if (!key ||
      ::RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &below, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr) != ERROR_SUCCESS ||
      below != 0) {
    return false;
  }
  const LSTATUS status = ::RegDeleteKeyW(rootKey(root), Widen(path).c_str());
  if (status != ERROR_SUCCESS && !isMissing(status))
    fail("The key " + shownKey(root, path) + " cannot be deleted", status);
  return status == ERROR_SUCCESS;
}

std::optional<RegistryData> queryValue(std::uint32_t root, const std::string& path, const std::string& name) {
  const Key key = open(root, path, KEY_READ);
  if (!key) return std::nullopt;
  const std::wstring wideName = Widen(name);
  const std::string shown = "The value " + name + " of " + shownKey(root, path) + " cannot be read";
  for (DWORD size = 256;;) {
    std::string bytes(size, '\0');
    DWORD type = 0;
    const LSTATUS status = ::RegQueryValueExW(key.get(), wideName.c_str(), nullptr, &type,
                                              reinterpret_cast<BYTE*>(bytes.data()), &size);
    if (isMissing(status)) return std::nullopt;
    if (status == ERROR_MORE_DATA) continue;  // `size` is now the size needed
    if (status != ERROR_SUCCESS) fail(shown, status);
    bytes.resize(size);
    const auto kind = static_cast<RegistryType>(type);
    if (!isText(kind)) return RegistryData{kind, std::move(bytes)};
    // The terminating zero may be missing, or be in the middle.
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::copy_n(bytes.data(), text.size() * sizeof(wchar_t), reinterpret_cast<char*>(text.data()));
    return RegistryData{kind, Narrow(std::wstring_view(text).substr(0, text.find(L'\0')))};
  }
}

void setValue(std::uint32_t root, const std::string& path, const std::string& name,
              const RegistryData& data) {
  if (queryValue(root, path, name) == data) return;
  const Key key = create(root, path);
  std::string bytes = data.bytes;
  if (isText(data.type)) {
    const std::wstring text = Widen(data.bytes);
    bytes.assign(reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t));
  }
  const LSTATUS status =
      ::RegSetValueExW(key.get(), Widen(name).c_str(), 0, static_cast<DWORD>(data.type),
                       reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()));
  if (status != ERROR_SUCCESS)
    fail("The value " + name + " of " + shownKey(root, path) + " cannot be written", status);
}

bool deleteValue(std::uint32_t root, const std::string& path, const std::string& name) {
  // Without the right to change the key, a missing value is still no error.
  if (!queryValue(root, path, name)) return keyExists(root, path);
  const Key key = open(root, path, KEY_SET_VALUE);
  if (!key) return false;
  const LSTATUS status = ::RegDeleteValueW(key.get(), Widen(name).c_str());
  if (status != ERROR_SUCCESS && !isMissing(status)) {
    fail("The value " + name + " of " + shownKey(root, path) + " cannot be deleted", status);
  }
  return true;
}

std::vector<std::string> enumerateKeys(std::uint32_t root, const std::string& path) {
  return enumerate(open(root, path, KEY_READ), [](HKEY key, DWORD index, wchar_t* name, DWORD* length) {
    return ::RegEnumKeyExW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
  });
}

std::vector<std::string> enumerateValues(std::uint32_t root, const std::string& path) {
  return enumerate(open(root, path, KEY_READ), [](HKEY key, DWORD index, wchar_t* name, DWORD* length) {
    return ::RegEnumValueW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
  });
}

std::string expandEnvironment(const std::string& text) {
  const std::wstring wide = Widen(text);
  std::wstring expanded(1000, L'\0');
  for (;;) {
    const DWORD size =
        ::ExpandEnvironmentStringsW(wide.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
    if (size == 0) return text;
    const bool fits = size <= expanded.size();
    expanded.resize(fits ? size - 1 : size);  // the size counts the terminating zero
    if (fits) return Narrow(expanded);
  }
}

}  // namespace RegistryApi
}  // namespace quillmoor
