// The rows of a remote folder, each with a box to tick and a picture. It holds none itself: it asks the
// browser for those in view, and so takes a folder of any size.
#pragma once

#include <wx/dataview.h>
#include <wx/object.h>

#include <cstddef>
#include <functional>

#include "browser/RemoteBrowser.h"

namespace quillmoor {

class RemoteList : public wxDataViewCtrl {
 public:
  /// `browser` must outlive this. It is asked from the first `showRows` on.
  RemoteList(wxWindow* parent, const RemoteBrowser& browser);

  /// The rows have become others.
  void showRows();
  /// Those from `first` on have come.
  void addRows(std::size_t first);
  /// Icons or ticks of the rows from `first` to `last`, both included, have changed.
  void changeRows(std::size_t first, std::size_t last);

  std::size_t shownRows() const;
  void selectRow(std::size_t row);
  /// Where the row's box, or its name, is on the screen; empty for a row that is not in view.
  wxRect boxPlace(std::size_t row) const;
  wxRect namePlace(std::size_t row) const;

  /// A double click, or Enter.
  std::function<void(std::size_t row)> onActivated;
  /// A click on the box, or the space bar.
  std::function<void(std::size_t row, bool checked)> onChecked;

 private:
  class Model;
  wxRect place(std::size_t row, unsigned column) const;
  void onKey(wxKeyEvent& event);

  const RemoteBrowser& browser_;
  wxObjectDataPtr<Model> model_;
};

}  // namespace quillmoor
