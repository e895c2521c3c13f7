// A report list: rows of texts under captions, each item with a colour of its own.
#pragma once

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
    int width;  // device-independent pixels
    bool right = false;
  };

  ReportControl(wxWindow* parent, const std::vector<Column>& columns, const wxString& name);

  /// Changes cost nothing until `populate`.
  std::size_t addRow();
  void setItem(std::size_t row, std::size_t column, const std::string& text);
  void setItemColour(std::size_t row, std::size_t column, Colour colour);
  const std::string& item(std::size_t row, std::size_t column) const;
  std::size_t rowCount() const;
  void clear();

  /// Shows the rows as they are now, the last one in view if there are new ones.
  void populate();

 private:
  class Model;
  wxObjectDataPtr<Model> model_;
};

}  // namespace quillmoor
