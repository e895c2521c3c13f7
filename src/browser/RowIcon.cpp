#include "browser/RowIcon.h"

#include <algorithm>
#include <string>

namespace quillmoor {
namespace {

struct Ending {
  std::string_view text;
  RowIcon icon;
};
/// Each must have four characters: ".HTML" could not match.
constexpr Ending kEndings[] = {
    {".TXT", RowIcon::TextFile},  {".ZIP", RowIcon::ZipFile},   {".ARJ", RowIcon::ZipFile},
    {".TGZ", RowIcon::ZipFile},   {".TAR", RowIcon::ZipFile},   {".LZH", RowIcon::ZipFile},
    {".LZA", RowIcon::ZipFile},   {".EXE", RowIcon::ExeFile},   {".COM", RowIcon::ExeFile},
    {".BAT", RowIcon::ExeFile},   {".JPG", RowIcon::ImageFile}, {".BMP", RowIcon::ImageFile},
    {".IMG", RowIcon::ImageFile}, {".GIF", RowIcon::ImageFile}, {".HLP", RowIcon::HelpFile}};

}  // namespace

RowIcon FileIcon(std::string_view text) {
  std::string ending(text.substr(text.size() - std::min<std::size_t>(text.size(), 4)));
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  const auto* const found = std::find_if(std::begin(kEndings), std::end(kEndings),
                                         [&](const Ending& one) { return one.text == ending; });
  return found == std::end(kEndings) ? RowIcon::File : found->icon;
}

}  // namespace quillmoor
