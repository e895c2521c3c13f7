// What a row of the remote browser is, told by the key of its icon.
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
  Link,         // a link that does not, as far as is known
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

/// The icon of a file whose row says `text`: by the last four characters, whatever their case.
RowIcon FileIcon(std::string_view text);

/// Such a row can be activated and ticked; any other is a file.
constexpr bool IsNavigable(RowIcon icon) {
  return icon <= RowIcon::Link;
}

}  // namespace quillmoor
