// The interface through which the remote browser updates its display.
#pragma once

#include <cstddef>
#include <string>

namespace quillmoor {

/// Every call is made from inside a call to RemoteBrowser, on the same thread; an implementation must return
/// quickly and raise nothing. It reads the rows from RemoteBrowser; a list that reads only the visible rows
/// stays fast with a hundred thousand.
class BrowserView {
 public:
  virtual ~BrowserView() = default;

  /// `lvwRemote` is now empty.
  virtual void rowsCleared() = 0;
  /// The rows from `first` to the last one have been added.
  virtual void rowsAdded(std::size_t first) = 0;
  /// The icon or tick of the rows `first` to `last`, both included, must be redrawn; also called when a tick
  /// is undone.
  virtual void rowsChanged(std::size_t first, std::size_t last) = 0;

  /// `cmbRemoteDir` must show this path; if `isNew`, the path is also added to its list.
  virtual void showFolder(const std::string& path, bool isNew) = 0;

  /// RemoteBrowser::log has grown.
  virtual void logChanged() = 0;

  /// An operation has begun or ended; in between, RemoteBrowser::takeEvents must be called.
  virtual void showBusy(bool busy) = 0;

  /// The only call after RemoteBrowser::close: the connection is closed, and the browser may be destroyed
  /// once the current call into it has returned.
  virtual void closed() = 0;
};

}  // namespace quillmoor
