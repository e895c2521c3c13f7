#include "controls/Pictures.h"

#include <wx/bitmap.h>
#include <wx/image.h>
#include <wx/mstream.h>
#include <wx/vector.h>

#include <cstring>
#include <string_view>

#include "controls/EmbeddedFile.h"

namespace quillmoor {
namespace {

wxVector<wxBitmap> bitmapsOf(const std::string& name) {
  if (wxImage::FindHandler(wxBITMAP_TYPE_PNG) == nullptr) wxImage::AddHandler(new wxPNGHandler);
  wxVector<wxBitmap> bitmaps;
  const std::string start = name + "-";
  for (std::size_t i = 0; i < kPictureFilesCount; ++i) {
    const EmbeddedFile& file = kPictureFiles[i];
    const std::string_view rest = std::string_view(file.name).substr(0, start.size());
    // The size must follow: "quillmoor-small-16.png" is not a size of "quillmoor".
    if (rest != start || std::strchr("0123456789", file.name[start.size()]) == nullptr) continue;
    wxMemoryInputStream stream(file.data, file.size);
    const wxImage image(stream, wxBITMAP_TYPE_PNG);
    if (image.IsOk()) bitmaps.push_back(wxBitmap(image));
  }
  return bitmaps;
}

}  // namespace

wxBitmapBundle Picture(const std::string& name) {
  return wxBitmapBundle::FromBitmaps(bitmapsOf(name));
}

wxIconBundle ApplicationIcon() {
  wxIconBundle icons;
  for (const wxBitmap& bitmap : bitmapsOf("icons/quillmoor")) {
    wxIcon icon;
    icon.CopyFromBitmap(bitmap);
    icons.AddIcon(icon);
  }
  return icons;
}

}  // namespace quillmoor
