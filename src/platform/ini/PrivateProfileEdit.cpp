// Changes the profile file in one step: edits a copy, which then replaces the file.
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "platform/files/Files.h"
#include "platform/files/FolderLock.h"
#include "platform/files/LocalPath.h"
#include "platform/files/PrivateFile.h"
#include "platform/files/WorkFolder.h"
#include "platform/ini/PrivateProfile.h"
#include "platform/ini/PrivateProfileFile.h"

namespace quillmoor {
namespace {

// Far more than any profile file; a larger file of that name is not read into memory.
constexpr std::uintmax_t kLargestFile = std::uintmax_t{64} << 20;

}  // namespace

std::optional<std::string> ReadProfileFile(const std::string& file) {
  const std::filesystem::path path = LocalPath(file);
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error)
    return error == std::errc::no_such_file_or_directory ? std::optional<std::string>("") : std::nullopt;
  std::ifstream stream(path, std::ios::binary);
  if (!stream || size > kLargestFile) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

bool WriteProfileFile(const std::string& file, std::string_view before, std::string_view after,
                      AtomicFile::Survives survives) {
  if (before == after) return mayBeWritten(file) || after.empty();
  try {
    // A file that the user may not write stays, although its folder would let it be replaced.
    if (pathExists(file) && !mayBeWritten(file)) return false;
    RemoveStaleTemporaries(LocalPathText(LocalPath(file).parent_path()));
    WritePrivateFile(file, after, survives);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool EditPrivateProfile(const std::string& file, const std::function<bool(const std::string& copy)>& edit) {
  std::optional<FolderLock> lock;  // else another program's edit could undo this one
  try {
    lock.emplace(LocalPath(file).parent_path());
  } catch (const std::system_error&) {
    return false;
  }
  const auto before = ReadProfileFile(file);
  if (!before) return false;
  struct Copy {
    std::string path;
    ~Copy() { removeFile(path); }
  } const copy{file + ".edit"};
  removeFile(copy.path);  // of a program that was killed
  if (!before->empty() && !WriteProfileFile(copy.path, "", *before)) return false;
  if (!edit(copy.path)) return false;
  const auto after = ReadProfileFile(copy.path);
  return after && WriteProfileFile(file, *before, *after, AtomicFile::Survives::power);
}

}  // namespace quillmoor
