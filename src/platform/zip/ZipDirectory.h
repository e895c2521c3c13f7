// The central directory while an archive is written: a list of headers that may not fit into memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files/Files.h"

namespace quillmoor::zip {

/// Keeps the headers in memory up to a limit, and the rest in a file. Raises std::system_error.
class Directory {
 public:
  /// `spoolPath`: the file created when `mostInMemory` bytes are exceeded, removed at the end.
  Directory(std::string spoolPath, std::size_t mostInMemory);
  ~Directory();
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  void add(std::string_view centralHeader);
  std::uint64_t entries() const { return entries_; }

  /// Calls `header` for each header in the order added. Nothing may be added afterwards.
  void forEach(const std::function<void(std::string_view centralHeader)>& header);

 private:
  std::string spoolPath_;
  std::size_t mostInMemory_;
  std::string memory_;
  std::unique_ptr<OutputFile> spool_;
  std::uint64_t entries_ = 0;
};

}  // namespace quillmoor::zip
