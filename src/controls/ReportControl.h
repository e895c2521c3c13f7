// A report list: rows of texts under captions, each item with a colour and a picture of its own.
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
    int width;  // device-independent pixels, for the usual font
    bool right = false;
    bool pictures = false;  // its items may have one before their text
  };

  ReportControl(wxWindow* parent, const std::vector<Column>& columns, const wxString& name,
                long style = wxDV_ROW_LINES);

  /// Changes cost nothing until `populate`.
  std::size_t addRow();
  void setItem(std::size_t row, std::size_t column, const std::string& text);
  void setItemColour(std::size_t row, std::size_t column, Colour colour);
  void setItemPicture(std::size_t row, std::size_t column, const wxBitmapBundle& picture);
  void setItemBold(std::size_t row, std::size_t column, bool bold);
  const std::string& item(std::size_t row, std::size_t column) const;
  bool isBold(std::size_t row, std::size_t column) const;
  std::size_t rowCount() const;
  void clear();

  /// Shown in the first column while there is no row, a line each; no rows themselves.
  void setEmptyLines(std::vector<std::string> lines);

  /// Shows the rows as they are now, the last one in view if there are new ones and `follow` is set.
  void populate(bool follow = true);

  /// In ascending order.
  std::vector<std::size_t> selectedRows() const;
  void selectRow(std::size_t row);
  wxDataViewItem itemAt(std::size_t row) const;
  /// The row at a point of the control, `rowCount()` where there is none.
  std::size_t rowAt(const wxPoint& point) const;

 private:
  class Model;
  wxObjectDataPtr<Model> model_;
};

}  // namespace quillmoor
