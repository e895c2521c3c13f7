#include "platform/FileSet.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/ArchiveFiles.h"
#include "platform/LocalFiles.h"
#include "platform/LocalPath.h"

namespace quillmoor {
namespace {

std::string fileName(const std::string& path) {
  return LocalPathText(LocalPath(path).filename());
}

/// Where files of the former set are while their names are exchanged.
std::string asideOf(const std::string& mainName) {
  const std::filesystem::path path = LocalPath(mainName);
  std::filesystem::path folder = path.parent_path() / ".quillmoor-unfinished-";
  folder += path.filename();
  return LocalPathText(folder);
}

void moveAside(const std::vector<SetFile>& files) {
  const std::string aside = asideOf(files.back().name);
  // The main file first: what is left without it does not look whole.
  for (auto file = files.rbegin(); file != files.rend(); ++file) {
    if (!pathKind(file->name)) continue;
    CreateLocalFolder(aside);  // where it cannot be made, the move fails
    renameFile(file->name, aside + kLocalSeparator + fileName(file->name));
  }
}

/// What cannot be done now is left to the next exchange: it does not change how this one went.
void settle(const std::string& mainName) {
  try {
    endKilledExchange(mainName);
  } catch (const std::system_error&) {
  }
}

}  // namespace

void giveSetItsNames(const std::vector<SetFile>& files) {
  if (files.size() == 1) return renameFile(files[0].temporary, files[0].name);
  for (const SetFile& file : files) {
    if (!mayBeReplaced(file.name)) {
      throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy),
                              "cannot replace " + file.name);
    }
  }
  std::size_t named = 0;
  try {
    moveAside(files);
    for (; named < files.size(); ++named) renameFile(files[named].temporary, files[named].name);
  } catch (const std::system_error&) {
    for (std::size_t i = 0; i < named; ++i) removeFile(files[i].name);
    settle(files.back().name);
    throw;
  }
  settle(files.back().name);
}

void endKilledExchange(const std::string& mainName) {
  const std::string aside = asideOf(mainName);
  if (pathKind(aside) != FileKind::folder) return;
  std::vector<std::string> names;
  readFolder(aside, false, [&](const std::string& name, FileKind) { names.push_back(name); });
  // The main file goes first and comes last: where it stands, either nothing else was moved or all is done.
  const bool complete = pathKind(mainName).has_value();
  const std::string main = fileName(mainName);
  std::partition(names.begin(), names.end(), [&](const std::string& name) { return name != main; });
  for (const std::string& name : names) {
    const std::string former = aside + kLocalSeparator + name;
    if (complete) {
      removeFile(former);
    } else {
      renameFile(former, LocalPathText(LocalPath(mainName).replace_filename(LocalPath(name))));
    }
  }
  RemoveLocalFile(aside);
}

}  // namespace quillmoor
