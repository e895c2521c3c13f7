// What the browser's session tells while it works.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "browser/BrowserRow.h"

namespace quillmoor {

class BrowserEvents {
 public:
  virtual ~BrowserEvents() = default;

  /// Text for `txtLog`, its line break included.
  virtual void logLine(std::string text) = 0;
  virtual void clearRows() = 0;
  virtual void addRows(std::vector<BrowserRow> rows) = 0;
  /// All rows are there; what the operation still does is to test links. Not told where there are none.
  virtual void linkTestsBegun() = 0;
  /// A link's test has shown that it leads to a folder. Rows are counted from the last clearRows.
  virtual void linkLeadsToFolder(std::size_t row) = 0;
  /// The current remote folder, as the server reports it.
  virtual void folderChanged(std::string path) = 0;
  virtual void loginChanged(bool loggedIn) = 0;
  /// A listing that is neither UNIX nor DOS style.
  virtual void unparsedListing(std::string text) = 0;

  /// The operation that was started last is over.
  virtual void operationEnded() = 0;
  /// The connection is closed and no more events come.
  virtual void sessionEnded() = 0;
};

}  // namespace quillmoor
