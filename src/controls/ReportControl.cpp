#include "controls/ReportControl.h"

#include <wx/settings.h>

#include <algorithm>
#include <utility>

#include "controls/AccessibleName.h"
#include "controls/TextWidth.h"
#include "controls/WxColours.h"
#include "engine/ShownText.h"

namespace quillmoor {
namespace {

wxString shownText(const std::string& text) {
  return wxString::FromUTF8(ShownText(text));
}

}  // namespace

class ReportControl::Model : public wxDataViewVirtualListModel {
 public:
  struct Item {
    std::string text;
    wxBitmapBundle picture;
    bool coloured = false;
    bool bold = false;
    Colour colour;
  };
  std::vector<std::vector<Item>> rows;
  std::vector<std::string> emptyLines;  // shown while there are no rows
  std::vector<bool> pictures;           // by column
  std::size_t shown = 0;                // rows that the list control knows
  std::vector<bool> dirty;              // rows changed since they were drawn

  void showAll() {
    shown = rows.size();
    Reset(static_cast<unsigned>(rows.empty() ? emptyLines.size() : shown));
  }
  void GetValueByRow(wxVariant& value, unsigned row, unsigned column) const override {
    static const Item none;
    const Item& one = row < rows.size() ? rows[row].at(column) : none;
    wxString text = shownText(one.text);
    if (rows.empty() && column == 0 && row < emptyLines.size()) text = shownText(emptyLines[row]);
    if (pictures.at(column)) {
      value << wxDataViewIconText(text, one.picture);
    } else {
      value = text;
    }
  }
  bool IsEnabledByRow(unsigned row, unsigned) const override { return row < rows.size(); }
  bool GetAttrByRow(unsigned row, unsigned column, wxDataViewItemAttr& attribute) const override {
    if (row >= rows.size()) return false;
    const Item& one = rows[row].at(column);
    if (one.bold) attribute.SetBold(true);
    if (one.coloured) {
      const Rgb background = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_LISTBOX));
      const Rgb colour{one.colour.red, one.colour.green, one.colour.blue};
      attribute.SetColour(ToWx(ShownOn(colour, background)));
    }
    return one.bold || one.coloured;
  }
  bool SetValueByRow(const wxVariant&, unsigned, unsigned) override { return false; }
};

ReportControl::ReportControl(wxWindow* parent, const std::vector<Column>& columns, const wxString& name,
                             long style)
    : model_(new Model) {
  Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, style | wxBORDER_THEME, wxDefaultValidator,
         name);
  SetAccessibleName(*this, name);
  for (const Column& column : columns) model_->pictures.push_back(column.pictures);
  AssociateModel(model_.get());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto place = static_cast<unsigned>(i);
    const int width = columns[i].width < 0 ? columns[i].width : WidthForText(*this, columns[i].width);
    const wxAlignment side = columns[i].right ? wxALIGN_RIGHT : wxALIGN_LEFT;
    constexpr auto kInert = wxDATAVIEW_CELL_INERT;
    constexpr int kFlags = wxDATAVIEW_COL_RESIZABLE;
    if (columns[i].pictures) {
      AppendIconTextColumn(columns[i].caption, place, kInert, width, side, kFlags);
    } else {
      AppendTextColumn(columns[i].caption, place, kInert, width, side, kFlags);
    }
  }
  EllipsizeCells(*this);
  // A list's best size includes all columns, but a pane may be narrower.
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

void ReportControl::setItemPicture(std::size_t row, std::size_t column, const wxBitmapBundle& picture) {
  model_->rows.at(row).at(column).picture = picture;
  model_->dirty.at(row) = true;
}

void ReportControl::setItemBold(std::size_t row, std::size_t column, bool bold) {
  Model::Item& one = model_->rows.at(row).at(column);
  if (one.bold == bold) return;
  one.bold = bold;
  model_->dirty.at(row) = true;
}

const std::string& ReportControl::item(std::size_t row, std::size_t column) const {
  return model_->rows.at(row).at(column).text;
}

bool ReportControl::isBold(std::size_t row, std::size_t column) const {
  return model_->rows.at(row).at(column).bold;
}

std::size_t ReportControl::rowCount() const {
  return model_->rows.size();
}

void ReportControl::clear() {
  model_->rows.clear();
  model_->dirty.clear();
  model_->showAll();
}

void ReportControl::setEmptyLines(std::vector<std::string> lines) {
  model_->emptyLines = std::move(lines);
  if (rowCount() == 0) model_->showAll();
}

void ReportControl::populate(bool follow) {
  const bool grown = model_->shown < model_->rows.size();
  if (grown && model_->shown == 0) {
    model_->showAll();
  } else {
    for (std::size_t row = 0; row < model_->shown; ++row) {
      if (model_->dirty[row]) model_->RowChanged(static_cast<unsigned>(row));
    }
    for (; model_->shown < model_->rows.size(); ++model_->shown) model_->RowAppended();
  }
  model_->dirty.assign(model_->dirty.size(), false);
  if (grown && follow) EnsureVisible(itemAt(rowCount() - 1));
}

std::vector<std::size_t> ReportControl::selectedRows() const {
  wxDataViewItemArray items;
  GetSelections(items);
  std::vector<std::size_t> rows;
  for (const wxDataViewItem& item : items) {
    const std::size_t row = model_->GetRow(item);
    if (row < rowCount()) rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

void ReportControl::selectRow(std::size_t row) {
  Select(itemAt(row));
}

wxDataViewItem ReportControl::itemAt(std::size_t row) const {
  return model_->GetItem(static_cast<unsigned>(row));
}

std::size_t ReportControl::rowAt(const wxPoint& point) const {
  wxDataViewItem item;
  wxDataViewColumn* column = nullptr;
  HitTest(point, item, column);
  return item.IsOk() ? std::min<std::size_t>(model_->GetRow(item), rowCount()) : rowCount();
}

}  // namespace quillmoor
