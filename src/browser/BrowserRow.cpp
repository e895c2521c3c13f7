#include "browser/BrowserRow.h"

#include "engine/mCreatePath.h"

namespace quillmoor {
namespace {

enum class Kind { folder, link, file };

/// Deliberate: "D" is a file; only "d" is a folder.
Kind kindOf(const RemoteEntry& entry) {
  if (entry.type == "d") return Kind::folder;
  return entry.type == "l" || entry.type == "L" ? Kind::link : Kind::file;
}

BrowserRow rowOf(const RemoteEntry& entry, const std::string& folder) {
  BrowserRow row;
  row.tag = folder + entry.name;
  row.cells = {entry.name,  std::to_string(entry.sizeBytes),  entry.dateText, entry.user,
               entry.group, std::to_string(entry.permissions)};
  switch (kindOf(entry)) {
    case Kind::folder:
      row.icon = RowIcon::FolderClose;
      break;
    case Kind::link:
      row.cells[0] += "->" + entry.linkTarget;
      row.icon = RowIcon::Link;
      break;
    case Kind::file:
      row.icon = FileIcon(row.text());
      break;
  }
  return row;
}

}  // namespace

BrowserRow ParentRow() {
  BrowserRow row;
  row.cells[0] = "..";
  row.icon = RowIcon::Cdup;
  return row;
}

std::vector<BrowserRow> FolderRows(const RemoteListing& listing, const std::string& currentFolder,
                                   bool foldersOnly, FolderNames names) {
  const std::string folder = AddTrailingSeparator(currentFolder, true, kLocalSeparator, names);
  std::vector<BrowserRow> rows;
  rows.reserve(listing.entries.size());
  for (const bool foldersPass : {true, false}) {
    for (const RemoteEntry& entry : listing.entries) {
      if (entry.name == "." || entry.name == "..") continue;
      const Kind kind = kindOf(entry);
      if ((kind == Kind::folder) != foldersPass || (kind == Kind::file && foldersOnly)) continue;
      rows.push_back(rowOf(entry, folder));
    }
  }
  return rows;
}

}  // namespace quillmoor
