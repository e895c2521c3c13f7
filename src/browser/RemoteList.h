// The rows of a remote folder, each with a check box and a picture. Reads only the visible rows from the
// browser, so it can show a folder of any size.
#pragma once

#include <wx/dataview.h>
#include <wx/object.h>

#include <cstddef>
#include <functional>

#include "browser/RemoteBrowser.h"

namespace quillmoor {

class RemoteList : public wxDataViewCtrl {
 public:
  /// `browser` must outlive this. It is read from the first `showRows` on.
  RemoteList(wxWindow* parent, const RemoteBrowser& browser);

  /// All rows have changed.
  void showRows();
  /// The rows from `first` on have been added.
  void addRows(std::size_t first);
  /// The icons or ticks of the rows `first` to `last`, both included, have changed.
  void changeRows(std::size_t first, std::size_t last);

  std::size_t shownRows() const;
  void selectRow(std::size_t row);
  /// The screen position of the row's box or name; empty for a row that is not in view.
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
