// The program's own pictures, each in the sizes that screens of different scale want.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>

#include <string>

namespace quillmoor {

/// A picture by its name below assets/, without size: "panes/profiles", "status/connected",
/// "browser/FolderClose", "icons/tray". An unknown name is a mistake in the program and gives an empty
/// bundle.
wxBitmapBundle Picture(const std::string& name);

/// The application's icon in all its sizes, for the frame.
wxIconBundle ApplicationIcon();

}  // namespace quillmoor
