// An archive, the folder it is made from, and a folder to write it to.
#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/files/LocalPath.h"
#include "platform/zip/ZipArchive.h"
#include "support/TemporaryFolder.h"
#include "support/ZipInspection.h"

namespace quillmoor::testing {

class ZipArchiveTest : public ::testing::Test {
 protected:
  ZipArchiveTest() {
    std::filesystem::create_directory(tree());
    std::filesystem::create_directory(folder_ / "out");
    archive.onError = [this](const std::string& description) { errors.push_back(description); };
  }

  std::filesystem::path tree() const { return folder_ / "tree"; }
  std::string out(const std::string& name) const { return LocalPathText(folder_ / "out" / LocalPath(name)); }

  void put(const std::string& name, std::string_view contents) {
    const std::filesystem::path path = tree() / LocalPath(name);
    std::filesystem::create_directories(path.parent_path());
    writeFile(path, contents);
  }

  void add(const std::optional<std::string>& password = std::nullopt) {
    archive.addFiles(LocalPathText(tree()) + kLocalSeparator + kLocalSeparator + "*", true, password);
  }

  /// Packs the tree, and takes the result apart.
  InspectedArchive packed(const std::optional<ZipSegmentOptions>& segments = std::nullopt,
                          const std::optional<std::string>& password = std::nullopt) {
    add(password);
    result = archive.write(out("a.zip"), segments);
    return inspectArchive(result.paths, password.value_or(""));
  }

  std::vector<std::string> filesOut() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "out"))
      names.push_back(LocalPathText(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
  }

  /// Text that deflate makes short, and bytes that it does not.
  static std::string text(std::size_t size) {
    std::string bytes;
    bytes.reserve(size + 16);
    for (unsigned i = 0; bytes.size() < size; ++i)
      bytes += "line " + std::to_string(i * 2654435761U % 5000) + "\n";
    bytes.resize(size);
    return bytes;
  }
  static std::string noise(std::size_t size) {
    std::string bytes(size, '\0');
    std::mt19937 random(1);
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
  }

  const TemporaryFolder folder_;
  ZipArchive archive;
  ZipResult result;
  std::vector<std::string> errors;
};

}  // namespace quillmoor::testing
