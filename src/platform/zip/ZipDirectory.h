// The central directory of an archive while its entries are written: a list of headers that may outgrow
// memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files/ArchiveFiles.h"

namespace quillmoor::zip {

/// Keeps the headers in memory up to a bound, and beyond it in a file. Errors are raised as
/// std::system_error.
class Directory {
 public:
  /// `spoolPath`: the file that is made when memory is not to suffice, and removed at the end.
  Directory(std::string spoolPath, std::size_t mostInMemory);
  ~Directory();
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  void add(std::string_view centralHeader);
  std::uint64_t entries() const { return entries_; }

  /// Gives the headers back, one by one, in the order in which they came. Nothing may be added afterwards.
  void forEach(const std::function<void(std::string_view centralHeader)>& header);

 private:
  std::string spoolPath_;
  std::size_t mostInMemory_;
  std::string memory_;
  std::unique_ptr<OutputFile> spool_;
  std::uint64_t entries_ = 0;
};

}  // namespace quillmoor::zip
