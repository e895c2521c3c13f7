#include "controls/ReportControl.h"

#include <wx/settings.h>

#include "controls/AccessibleName.h"
#include "controls/WxColours.h"

namespace quillmoor {
namespace {

/// Names of old servers are no UTF-8; a list has to show something.
wxString shownText(const std::string& text) {
  const wxString shown = wxString::FromUTF8(text);
  return shown.empty() ? wxString(text.c_str(), wxConvISO8859_1) : shown;
}

}  // namespace

class ReportControl::Model : public wxDataViewVirtualListModel {
 public:
  struct Item {
    std::string text;
    bool coloured = false;
    Colour colour;
  };
  std::vector<std::vector<Item>> rows;
  std::size_t shown = 0;    // rows that the list knows of
  std::vector<bool> dirty;  // rows changed since they were shown

  void GetValueByRow(wxVariant& value, unsigned row, unsigned column) const override {
    value = row < rows.size() ? shownText(rows[row].at(column).text) : wxString();
  }
  bool GetAttrByRow(unsigned row, unsigned column, wxDataViewItemAttr& attribute) const override {
    if (row >= rows.size() || !rows[row].at(column).coloured) return false;
    const Colour& colour = rows[row][column].colour;
    const Rgb background = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_LISTBOX));
    attribute.SetColour(ToWx(ReadableOn({colour.red, colour.green, colour.blue}, background)));
    return true;
  }
  bool SetValueByRow(const wxVariant&, unsigned, unsigned) override { return false; }
};

ReportControl::ReportControl(wxWindow* parent, const std::vector<Column>& columns, const wxString& name)
    : model_(new Model) {
  Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxDV_ROW_LINES | wxBORDER_THEME,
         wxDefaultValidator, name);
  SetAccessibleName(*this, name);
  AssociateModel(model_.get());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    AppendTextColumn(columns[i].caption, static_cast<unsigned>(i), wxDATAVIEW_CELL_INERT,
                     FromDIP(columns[i].width), columns[i].right ? wxALIGN_RIGHT : wxALIGN_LEFT,
                     wxDATAVIEW_COL_RESIZABLE);
  }
  // The best size of a list is all of its columns; a pane may be narrower.
  SetMinSize(FromDIP(wxSize(120, 60)));
}

std::size_t ReportControl::addRow() {
  model_->rows.emplace_back(static_cast<std::size_t>(GetColumnCount()));
  model_->dirty.push_back(false);
  return model_->rows.size() - 1;
}

void ReportControl::setItem(std::size_t row, std::size_t column, const std::string& text) {
  model_->rows.at(row).at(column).text = text;
  model_->dirty.at(row) = true;
}

void ReportControl::setItemColour(std::size_t row, std::size_t column, Colour colour) {
  Model::Item& one = model_->rows.at(row).at(column);
  one.coloured = true;
  one.colour = colour;
  model_->dirty.at(row) = true;
}

const std::string& ReportControl::item(std::size_t row, std::size_t column) const {
  return model_->rows.at(row).at(column).text;
}

std::size_t ReportControl::rowCount() const {
  return model_->rows.size();
}

void ReportControl::clear() {
  model_->rows.clear();
  model_->dirty.clear();
  model_->shown = 0;
  model_->Reset(0);
}

void ReportControl::populate() {
  const bool grown = model_->shown < model_->rows.size();
  for (std::size_t row = 0; row < model_->shown; ++row) {
    if (model_->dirty[row]) model_->RowChanged(static_cast<unsigned>(row));
  }
  for (; model_->shown < model_->rows.size(); ++model_->shown) model_->RowAppended();
  model_->dirty.assign(model_->dirty.size(), false);
  if (grown) EnsureVisible(model_->GetItem(static_cast<unsigned>(model_->rows.size() - 1)));
}

}  // namespace quillmoor
