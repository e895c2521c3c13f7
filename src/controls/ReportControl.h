// A report list: rows of text items under captions, each with its own colour and picture.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/dataview.h>
#include <wx/object.h>

#include <cstddef>
#include <string>
#include <vector>

#include "engine/RunDisplay.h"

namespace quillmoor {

class ReportControl : public wxDataViewCtrl {
 public:
  struct Column {
    const char* caption;
    int width;  // device-independent pixels, for the default font
    bool right = false;
    bool pictures = false;  // items may have a picture before their text
  };

  ReportControl(wxWindow* parent, const std::vector<Column>& columns, const wxString& name,
                long style = wxDV_ROW_LINES);

  /// Changes are not drawn until `populate`.
  std::size_t addRow();
  void setItem(std::size_t row, std::size_t column, const std::string& text);
  void setItemColour(std::size_t row, std::size_t column, Colour colour);
  void setItemPicture(std::size_t row, std::size_t column, const wxBitmapBundle& picture);
  void setItemBold(std::size_t row, std::size_t column, bool bold);
  const std::string& item(std::size_t row, std::size_t column) const;
  bool isBold(std::size_t row, std::size_t column) const;
  std::size_t rowCount() const;
  void clear();

  /// Lines shown in the first column while there are no rows; they do not count as rows.
  void setEmptyLines(std::vector<std::string> lines);

  /// Draws all changes; scrolls to the last row if rows were added and `follow` is set.
  void populate(bool follow = true);

  /// In ascending order.
  std::vector<std::size_t> selectedRows() const;
  void selectRow(std::size_t row);
  wxDataViewItem itemAt(std::size_t row) const;
  /// The row at a point of the control; `rowCount()` if there is none.
  std::size_t rowAt(const wxPoint& point) const;

 private:
  class Model;
  wxObjectDataPtr<Model> model_;
};

}  // namespace quillmoor
