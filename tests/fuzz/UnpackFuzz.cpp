// An archive, whole or in two parts, whose contents are what its directory says; or an ArchiveError. The
// first two bytes say where the second part begins, if there is one.
#include <algorithm>
#include <span>

#include "Fuzz.h"
#include "platform/files/Files.h"
#include "platform/zip/ZipReader.h"
#include "sfx/EntryName.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

void readAll(const std::string& program) {
  sfx::ZipReader archive(program);
  std::uint64_t entries = 0;
  std::uint64_t most = std::uint64_t{64} << 20;  // many entries may lie in one place
  archive.forEach([&](const sfx::ArchiveEntry& entry) {
    ++entries;
    for (const LocalNameRules rules : {LocalNameRules::posix, LocalNameRules::windows}) {
      const auto parts = sfx::partsOf(entry.name, rules);
      for (const std::string& part : parts.value_or(std::vector<std::string>{})) {
        require(!part.empty() && part != "." && part != "..");
        require(part.find_first_of(std::string_view("/\0", 2)) == std::string::npos);
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
}  // namespace quillmoor

void quillmoor::tryInput(std::string_view input) {
  static const testing::TemporaryFolder folder;
  const std::string program = (folder / "a.exe").string(), last = (folder / "a.zip").string();
  if (input.size() < 2) return;
  const auto byte = [&](std::size_t at) {
    return static_cast<std::size_t>(static_cast<unsigned char>(input[at]));
  };
  const std::size_t cut = std::min(byte(0) << 8 | byte(1), input.size() - 2);
  testing::writeFile(program, input.substr(2, cut == 0 ? input.size() : cut));
  removeFile(last);
  if (cut != 0) testing::writeFile(last, input.substr(2 + cut));
  try {
    readAll(program);
  } catch (const sfx::ArchiveError& error) {
    require(error.what()[0] != '\0');
  }
}
