#include "platform/registry/posix/AutostartEntry.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "platform/files/AtomicFile.h"
#include "platform/files/WorkFolder.h"
#include "platform/system/posix/UserFolders.h"

namespace quillmoor {
namespace {

std::filesystem::path entryFile(const std::string& name) {
  return UserConfigurationFolder() / "autostart" / (name + ".desktop");
}

/// An argument of an Exec line (Desktop Entry standard, "The Exec key"): quoted, escaped once for the quotes
/// and once more for a string value.
std::string execArgument(std::string_view path) {
  std::string quoted = "\"";
  for (const char c : path) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
    if (c == '%') quoted += '%';
    quoted += c;
  }
  quoted += '"';
  std::string escaped;
  for (const char c : quoted) {
    if (c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

bool holds(const std::filesystem::path& file, const std::string& text) {
  std::error_code error;
  if (std::filesystem::file_size(file, error) != text.size() || error) return false;
  std::ifstream stream(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {}) == text;
}

}  // namespace

void WriteAutostartEntry(const std::string& name, const std::string& program) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  if (name.find('/') != std::string::npos || std::any_of(program.begin(), program.end(), isControl)) {
    throw std::invalid_argument("\"" + name + "\" cannot be started with the session");
  }
  const std::filesystem::path file = entryFile(name);
  const std::string text =
      "[Desktop Entry]\nType=Application\nName=Quillmoor\nExec=" + execArgument(program) +
      "\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
  if (holds(file, text)) return;
  std::filesystem::create_directories(file.parent_path());
  RemoveStaleTemporaries(file.parent_path());
  AtomicFile entry(file.string());
  entry.write(text);
  entry.commit();
}

void RemoveAutostartEntry(const std::string& name) {
  std::filesystem::remove(entryFile(name));
}

}  // namespace quillmoor
