#include "controls/TaskPanel.h"

#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>

#include "controls/Pictures.h"

namespace quillmoor {
namespace {

constexpr int kGap = 6;  // device-independent pixels

bool same(const std::vector<TaskPanel::Item>& a, const std::vector<TaskPanel::Item>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& other) {
    return one.id == other.id && one.caption == other.caption;
  });
}

}  // namespace

TaskPanel::TaskPanel(wxWindow* parent, const wxString& name)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, name) {
  SetSizer(new wxBoxSizer(wxVERTICAL));
}

void TaskPanel::addTitle(const wxString& title) {
  auto* const label = new wxStaticText(this, wxID_ANY, title);
  label->SetFont(label->GetFont().Bold());
  GetSizer()->Add(label, wxSizerFlags().Border(wxLEFT | wxRIGHT | wxTOP, FromDIP(kGap)));
}

void TaskPanel::addCommands(const wxString& title, const std::vector<Command>& commands) {
  addTitle(title);
  for (const Command& one : commands) {
    auto* const button = new wxButton(this, wxID_ANY, one.caption, wxDefaultPosition, wxDefaultSize,
                                      wxBU_LEFT | wxBORDER_NONE);
    button->SetBitmap(Picture(one.picture));
    button->SetBitmapMargins(FromDIP(2), 0);
    button->Bind(wxEVT_BUTTON, [this, id = one.id](wxCommandEvent&) {
      if (onItem) onItem(id);
    });
    GetSizer()->Add(button, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, FromDIP(kGap) / 2));
    commands_.push_back({one.id, button});
  }
}

void TaskPanel::addList(const wxString& title, const char* picture) {
  picture_ = picture;
  addTitle(title);
  const std::vector<ReportControl::Column> columns = {{"Name", wxCOL_WIDTH_AUTOSIZE, false, true}};
  list_ = new ReportControl(this, columns, title, wxDV_NO_HEADER | wxDV_SINGLE);
  GetSizer()->Add(list_, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(kGap)));
  list_->GetMainWindow()->Bind(wxEVT_LEFT_UP, [this](wxMouseEvent& event) {
    event.Skip();
    const wxPoint point = list_->GetMainWindow()->ClientToScreen(event.GetPosition());
    const std::size_t row = list_->rowAt(list_->ScreenToClient(point));
    CallAfter([this, row] { rowChosen(row); });  // the list has not processed the click yet
  });
  list_->Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, [this](wxDataViewEvent&) {
    const std::vector<std::size_t> rows = list_->selectedRows();
    if (!rows.empty()) rowChosen(rows.front());
  });
}

void TaskPanel::rowChosen(std::size_t row) {
  if (row < items_.size() && onItem) onItem(items_[row].id);
}

void TaskPanel::setItems(const std::vector<Item>& items) {
  if (same(items, items_)) return;
  items_ = items;
  list_->clear();
  for (const Item& item : items_) {
    const std::size_t row = list_->addRow();
    list_->setItem(row, 0, item.caption);
    list_->setItemPicture(row, 0, Picture(picture_));
  }
  list_->populate(false);
}

void TaskPanel::markItem(int id) {
  for (std::size_t row = 0; row < items_.size(); ++row) list_->setItemBold(row, 0, items_[row].id == id);
  list_->populate(false);
}

wxButton* TaskPanel::command(int id) const {
  const auto found =
      std::find_if(commands_.begin(), commands_.end(), [&](const Button& one) { return one.id == id; });
  return found == commands_.end() ? nullptr : found->button;
}

}  // namespace quillmoor
