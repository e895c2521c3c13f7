#include "engine/SafeName.h"

#include <algorithm>
#include <array>

#include "engine/mCreatePath.h"
#include "platform/files/ReservedNames.h"
#include "platform/system/PrintableText.h"

namespace quillmoor {
namespace {

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

/// Names that denote devices in every folder of Windows, with any extension.
bool isDeviceName(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  stem.erase(stem.find_last_not_of(' ') + 1);
  std::transform(stem.begin(), stem.end(), stem.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  constexpr std::array<std::string_view, 6> kDevices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
  if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) return true;
  if (!stem.starts_with("COM") && !stem.starts_with("LPT")) return false;
  // Superscript digits count as digits there.
  constexpr std::array<std::string_view, 12> kPorts = {"1", "2", "3", "4", "5", "6",
                                                       "7", "8", "9", "¹", "²", "³"};
  return std::find(kPorts.begin(), kPorts.end(), std::string_view(stem).substr(3)) != kPorts.end();
}

char separatorOf(LocalNameRules rules) {
  return rules == LocalNameRules::windows ? '\\' : '/';
}

std::optional<std::string> componentsRefusal(std::string_view path, char separator, LocalNameRules rules) {
  while (!path.empty()) {
    const std::string_view component = path.substr(0, path.find(separator));
    path.remove_prefix(std::min(component.size() + 1, path.size()));
    if (component.empty()) continue;
    if (auto reason = ListedNameRefusal(component, rules)) return reason;
  }
  return std::nullopt;
}

/// Tests the resulting local folder, after everything that LocalFolderFor does to a path.
std::optional<std::string> mirroredRefusal(const std::string& target, const std::string& currentDir,
                                           LocalNameRules rules, FolderNames names) {
  const char separator = separatorOf(rules);
  const std::string root = LocalFolderFor(target, "/", separator, names);
  const std::string folder = LocalFolderFor(target, currentDir, separator, names);
  if (!folder.starts_with(root)) return "it leads out of the local folder";
  return componentsRefusal(std::string_view(folder).substr(root.size()), separator, rules);
}

}  // namespace

std::optional<std::string> ListedNameRefusal(std::string_view name, LocalNameRules rules) {
  if (name.empty()) return "it is empty";
  if (name == "." || name == "..") return "it leads to another folder";
  if (std::any_of(name.begin(), name.end(), isControl)) return "it holds a control character";
  if (name.find('/') != std::string_view::npos) return "it holds a path separator";
  if (IsReservedLocalName(name)) return "it is a name of this program's own temporary files";
  if (rules == LocalNameRules::posix) return std::nullopt;

  if (name.find('\\') != std::string_view::npos) return "it holds a path separator";
  if (name.find(':') != std::string_view::npos) return "it holds a colon, which names a drive or a stream";
  if (name.find_first_of("<>\"|?*") != std::string_view::npos)
    return "it holds a character that is not allowed in file names";
  if (name.back() == '.' || name.back() == ' ') return "it ends in a dot or a blank";
  if (isDeviceName(name)) return "it is the name of a device";
  return std::nullopt;
}

std::optional<std::string> RemotePathRefusal(std::string_view path, LocalNameRules rules, FolderNames names) {
  if (auto reason = componentsRefusal(path, '/', rules)) return reason;
  return mirroredRefusal("target", std::string(path), rules, names);
}

std::optional<std::string> LocalFolderRefusal(const std::string& target, const std::string& currentDir,
                                              LocalNameRules rules, FolderNames names) {
  if (auto reason = RemotePathRefusal(currentDir, rules, names)) return reason;
  return mirroredRefusal(target, currentDir, rules, names);
}

std::string PrintableName(std::string_view name) {
  return PrintableText(name);
}

}  // namespace quillmoor
