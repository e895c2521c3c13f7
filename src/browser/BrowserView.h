// What the remote browser shows of itself, and all it knows of whoever shows it.
#pragma once

#include <cstddef>
#include <string>

namespace quillmoor {

/// Implemented by `frmFtpBrowse` and by tests. Every call is made from inside a call to RemoteBrowser, on the
/// thread of that call; an implementation returns soon and raises nothing. It asks RemoteBrowser for what
/// the rows hold: a list that asks for the rows in view alone stays quick with a hundred thousand.
class BrowserView {
 public:
  virtual ~BrowserView() = default;

  /// `lvwRemote` is empty.
  virtual void rowsCleared() = 0;
  /// The rows from `first` to the last have come.
  virtual void rowsAdded(std::size_t first) = 0;
  /// Icon or tick of the rows from `first` to `last`, both included, are to be shown anew. A tick that is
  /// undone is told so too.
  virtual void rowsChanged(std::size_t first, std::size_t last) = 0;

  /// `cmbRemoteDir` holds this path now. `isNew`: it is to be put into the box's list as well.
  virtual void showFolder(const std::string& path, bool isNew) = 0;

  /// RemoteBrowser::log has grown.
  virtual void logChanged() = 0;

  /// An operation has begun or ended; while it lasts RemoteBrowser::takeNews is to be called.
  virtual void showBusy(bool busy) = 0;

  /// After RemoteBrowser::close the one call that still comes: the connection is closed, and the browser may
  /// be destroyed as soon as the call into it has returned.
  virtual void closed() = 0;
};

}  // namespace quillmoor
