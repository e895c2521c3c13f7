// The rows of the remote browser's list, and how they are made from a listing.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "browser/RowIcon.h"
#include "engine/RemoteListing.h"
#include "engine/mCreatePath.h"

namespace quillmoor {

/// Columns of `lvwRemote`, in their order.
inline constexpr std::array<std::string_view, 6> kBrowserColumns = {"Name", "Size",  "Date",
                                                                    "User", "Group", "Permissions"};

/// Texts are the server's bytes, unchanged.
struct BrowserRow {
  std::array<std::string, kBrowserColumns.size()> cells;
  /// The item's full path; "" for the parent row.
  std::string tag;
  RowIcon icon = RowIcon::File;
  bool checked = false;

  /// The name; for a link the name, "->" and its target.
  const std::string& text() const { return cells[0]; }
};

BrowserRow ParentRow();

/// The rows of a folder's listing, without the parent row: folders first, then links and files, both in the
/// order of the listing. Links have the icon `Link` until they have been tested. `foldersOnly` omits files.
/// `currentFolder` is the folder's path as reported by the server; changed as `names` says, it begins the
/// paths of the rows.
std::vector<BrowserRow> FolderRows(const RemoteListing& listing, const std::string& currentFolder,
                                   bool foldersOnly, FolderNames names = FolderNames::cut);

}  // namespace quillmoor
