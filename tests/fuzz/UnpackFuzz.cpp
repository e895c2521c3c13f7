// Any bytes at all are an archive, whole or in two parts, whose contents are what its directory says, or an
// ArchiveError, never anything else.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "platform/files/ArchiveFiles.h"
#include "platform/zip/ZipReader.h"
#include "sfx/EntryName.h"

namespace {

using namespace quillmoor;

void require(bool holds) {
  if (!holds) std::abort();
}

/// A folder for the archive, removed when the program ends.
struct Folder {
  Folder() {
    path = (std::filesystem::temp_directory_path() / "quillmoor-fuzz.XXXXXX").string();
    require(::mkdtemp(path.data()) != nullptr);
  }
  ~Folder() { std::filesystem::remove_all(path); }
  std::string path;
};

void write(const std::string& path, std::span<const std::uint8_t> bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  require(file.flush().good());
}

void readAll(const std::string& program) {
  sfx::ZipReader archive(program);
  std::uint64_t entries = 0;
  std::uint64_t most = std::uint64_t{64} << 20;  // many entries may lie in one place
  archive.forEach([&](const sfx::ArchiveEntry& entry) {
    ++entries;
    for (const LocalNameRules rules : {LocalNameRules::posix, LocalNameRules::windows}) {
      const auto parts = sfx::partsOf(entry.name, rules);
      for (const std::string& part : parts.value_or(std::vector<std::string>{})) {
        require(!part.empty() && part != "." && part != ".." && part.find('/') == std::string::npos);
        require(part.find('\0') == std::string::npos);
      }
    }
    if (entry.size > most) return;
    most -= entry.size;
    std::uint64_t given = 0;
    try {
      archive.contents(entry, "secret", [&](std::span<const std::uint8_t> bytes) { given += bytes.size(); });
      require(given == entry.size);
    } catch (const sfx::ArchiveError& error) {
      require(given <= entry.size && error.what()[0] != '\0');
    }
  });
  require(entries == archive.entries());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const std::string program = folder.path + "/a.exe", last = folder.path + "/a.zip";
  const std::span<const std::uint8_t> bytes(data, size);
  if (size < 2) return 0;
  // The first two bytes say where the second part begins, if there is one.
  const std::size_t cut = std::min<std::size_t>(data[0] << 8 | data[1], size - 2);
  write(program, cut == 0 ? bytes.subspan(2) : bytes.subspan(2, cut));
  removeFile(last);
  if (cut != 0) write(last, bytes.subspan(2 + cut));
  try {
    readAll(program);
  } catch (const sfx::ArchiveError& error) {
    require(error.what()[0] != '\0');
  }
  return 0;
}
