// The stored position of the remote browser's window, and whether it shows folders only.
#pragma once

#include <optional>

namespace quillmoor {

struct BrowserPlacement {
  /// In the form's unit.
  struct Rectangle {
    double left = 0, top = 0, width = 0, height = 0;
    friend bool operator==(const Rectangle&, const Rectangle&) = default;
  };
  /// Nothing when no usable one is stored; the form then chooses.
  std::optional<Rectangle> window;
  bool foldersOnly = false;
};

/// Raises nothing: an unreadable value counts as missing.
BrowserPlacement LoadBrowserPlacement();

/// Without `window` the stored position is kept. Raises nothing: failures to store are ignored.
void SaveBrowserPlacement(const BrowserPlacement& placement);

}  // namespace quillmoor
