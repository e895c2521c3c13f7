#include "engine/mCreatePath.h"

#include <algorithm>
#include <string_view>

#include "platform/files/Files.h"

namespace quillmoor {
namespace {

constexpr std::string_view kNetwork = "\\\\";  // begins a network path of Windows

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string cut(std::string path) {
  const auto open = path.find('[');
  const auto close = path.find(']');
  if (open != std::string::npos && close != std::string::npos && open < close)
    path.erase(open, close - open + 1);
  return trimmed(path);
}

}  // namespace

std::string AddTrailingSeparator(const std::string& path, bool remote, char localSeparator,
                                 FolderNames names) {
  std::string result = names == FolderNames::cut ? cut(path) : path;
  const char separator = remote ? '/' : localSeparator;
  if (!result.ends_with(separator)) result += separator;
  return result;
}

std::string LocalFolderFor(const std::string& target, const std::string& currentDir, char localSeparator,
                           FolderNames names) {
  std::string joined = AddTrailingSeparator(target, false, localSeparator, names) + currentDir;
  std::replace(joined.begin() + static_cast<std::ptrdiff_t>(joined.size() - currentDir.size()), joined.end(),
               '/', localSeparator);
  std::string folder;
  folder.reserve(joined.size());
  std::size_t i = 0;
  const auto rules = localSeparator == '\\' ? LocalNameRules::windows : LocalNameRules::posix;
  if (names == FolderNames::asListed && IsNetworkPath(joined, rules)) {
    i = joined.find(kNetwork) + 1;  // blanks may precede it, and are dropped
    folder += localSeparator;
  }
  for (; i < joined.size(); ++i) {
    folder += joined[i];
    if (joined[i] == localSeparator && i + 1 < joined.size() && joined[i + 1] == localSeparator) ++i;
  }
  return AddTrailingSeparator(folder, false, localSeparator, names);
}

bool CreatePath(const std::string& path) {
  // On Windows the user may have typed slashes.
  const std::string native = LocalPathText(LocalPath(path).make_preferred());
  const auto create = [](const std::string& folder) { return !createFolder(folder); };
  return CreatePath(native, kLocalSeparator, {pathExists, create});
}

bool CreatePath(const std::string& path, char separator, const FolderSystem& system) {
  if (path.empty()) return false;
  if (system.exists(path)) return true;
  const bool onNetwork = separator == '\\' && path.starts_with(kNetwork);
  std::size_t at = onNetwork ? kNetwork.size() : 0;
  const auto nextComponent = [&] {
    const std::size_t end = std::min(path.find(separator, at), path.size());
    std::string component = path.substr(at, end - at);
    at = end + 1;
    return component;
  };
  std::string built(onNetwork ? kNetwork : std::string_view());
  built += nextComponent();  // a drive or a server, which cannot be created
  bool missing = false;
  while (at < path.size()) {
    const std::string component = nextComponent();
    if (component.empty()) continue;
    built += separator;
    built += component;
    if (!missing && system.exists(built)) continue;
    missing = true;
    if (!system.create(built)) return false;
  }
  return true;
}

}  // namespace quillmoor
