// The program's own pictures, each in several sizes for screens of different scale.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>

#include <string>

namespace quillmoor {

/// The picture with this name below assets/, without its size: "panes/profiles", "status/connected",
/// "browser/FolderClose", "icons/tray". An unknown name is a programming error and returns an empty bundle.
wxBitmapBundle Picture(const std::string& name);

/// The application's icon in all its sizes, for the frame.
wxIconBundle ApplicationIcon();

}  // namespace quillmoor
