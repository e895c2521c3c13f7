// The rows of the remote browser's list, and how a listing becomes rows.
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

/// Texts are the server's bytes, whatever they are.
struct BrowserRow {
  std::array<std::string, kBrowserColumns.size()> cells;
  /// The item's whole path; "" for the parent row.
  std::string tag;
  RowIcon icon = RowIcon::File;
  bool checked = false;

  /// The name; of a link the name, "->" and what it points to.
  const std::string& text() const { return cells[0]; }
};

BrowserRow ParentRow();

/// The rows of a folder's listing, without the parent row: the folders, then links and files, each in the
/// order of the listing. Links are `Link` until they have been tested. `foldersOnly` leaves out files.
/// `currentFolder` is the folder's path as the server reports it, which paths of rows begin with as `names`
/// says.
std::vector<BrowserRow> FolderRows(const RemoteListing& listing, const std::string& currentFolder,
                                   bool foldersOnly, FolderNames names = FolderNames::cut);

}  // namespace quillmoor
