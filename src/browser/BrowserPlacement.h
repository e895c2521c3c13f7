// Where the remote browser's window stands and whether it shows files, as they are stored.
#pragma once

#include <optional>

namespace quillmoor {

struct BrowserPlacement {
  /// In the unit of the form's choice.
  struct Rectangle {
    double left = 0, top = 0, width = 0, height = 0;
    friend bool operator==(const Rectangle&, const Rectangle&) = default;
  };
  /// Nothing when no usable one has been stored: the form then chooses.
  std::optional<Rectangle> window;
  bool foldersOnly = false;
};

/// Raises nothing: what cannot be read counts as missing.
BrowserPlacement LoadBrowserPlacement();

/// Without `window` the stored one stays. Raises nothing: what cannot be stored is forgotten.
void SaveBrowserPlacement(const BrowserPlacement& placement);

}  // namespace quillmoor
