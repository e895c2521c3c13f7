// The kinds of rows in the remote browser, each known by the key of its icon.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace quillmoor {

/// Keys of the pictures in `imgSmallIcon`, by position in kIconKeys.
enum class RowIcon {
  Cdup,         // leads to the parent folder
  FolderClose,  // a folder
  FolderLink,   // a link that leads to a folder
  Link,         // a link not known to lead to a folder
  TextFile,
  ZipFile,
  ExeFile,
  ImageFile,
  HelpFile,
  File
};
inline constexpr std::array<std::string_view, 10> kIconKeys = {
    "Cdup",    "FolderClose", "FolderLink", "Link",     "TextFile",
    "ZipFile", "ExeFile",     "ImageFile",  "HelpFile", "File"};

constexpr std::string_view IconKey(RowIcon icon) {
  return kIconKeys[static_cast<std::size_t>(icon)];
}

/// The icon of a file, chosen by the last four characters of `text`, ignoring case.
RowIcon FileIcon(std::string_view text);

/// Whether the row can be activated and ticked; other rows are files.
constexpr bool IsNavigable(RowIcon icon) {
  return icon <= RowIcon::Link;
}

}  // namespace quillmoor
