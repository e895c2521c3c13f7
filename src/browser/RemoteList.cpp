#include "browser/RemoteList.h"

#include <algorithm>
#include <array>
#include <string>

#include "controls/AccessibleName.h"
#include "controls/Pictures.h"
#include "controls/TextWidth.h"

namespace quillmoor {
namespace {

constexpr unsigned kBoxColumn = 0;  // the columns of BrowserRow follow
constexpr unsigned kNameColumn = 1;
constexpr int kWidths[] = {200, 90, 110, 70, 70, 90};  // device-independent pixels, for the default font
static_assert(std::size(kWidths) == kBrowserColumns.size());
/// More rows than this are redrawn together.
constexpr std::size_t kSingly = 200;

}  // namespace

class RemoteList::Model : public wxDataViewVirtualListModel {
 public:
  Model(const RemoteBrowser& browser, const RemoteList& list) : browser_(browser), list_(list) {
    for (std::size_t i = 0; i < imgSmallIcon.size(); ++i)
      imgSmallIcon[i] = Picture("browser/" + std::string(kIconKeys[i]));
  }

  void GetValueByRow(wxVariant& value, unsigned row, unsigned column) const override {
    const bool known = row < browser_.rowCount();
    if (column == kBoxColumn) {
      value = known && browser_.checked(row);
      return;
    }
    const wxString text = known ? wxString::FromUTF8(browser_.cell(row, column - kNameColumn)) : wxString();
    if (column == kNameColumn) {
      const auto icon = known ? browser_.icon(row) : RowIcon::File;
      value << wxDataViewIconText(text, imgSmallIcon.at(static_cast<std::size_t>(icon)));
    } else {
      value = text;
    }
  }
  bool GetAttrByRow(unsigned, unsigned, wxDataViewItemAttr&) const override { return false; }
  /// A file's box stays unticked.
  bool SetValueByRow(const wxVariant& value, unsigned row, unsigned) override {
    if (list_.onChecked && row < browser_.rowCount()) list_.onChecked(row, value.GetBool());
    return true;
  }

 private:
  const RemoteBrowser& browser_;
  const RemoteList& list_;
  std::array<wxBitmapBundle, kIconKeys.size()> imgSmallIcon;
};

RemoteList::RemoteList(wxWindow* parent, const RemoteBrowser& browser)
    : browser_(browser), model_(new Model(browser, *this)) {
  Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxDV_SINGLE | wxBORDER_THEME, wxDefaultValidator,
         "lvwRemote");
  SetAccessibleName(*this, "The server's folder");
  AssociateModel(model_.get());
  AppendToggleColumn("", kBoxColumn, wxDATAVIEW_CELL_ACTIVATABLE, FromDIP(30), wxALIGN_CENTER, 0);
  for (unsigned i = 0; i < kBrowserColumns.size(); ++i) {
    const wxString caption(kBrowserColumns[i].data(), kBrowserColumns[i].size());
    const int width = WidthForText(*this, kWidths[i]);
    if (i + kNameColumn == kNameColumn) {
      AppendIconTextColumn(caption, i + kNameColumn, wxDATAVIEW_CELL_INERT, width);
    } else {
      AppendTextColumn(caption, i + kNameColumn, wxDATAVIEW_CELL_INERT, width,
                       caption == "Size" ? wxALIGN_RIGHT : wxALIGN_LEFT);
    }
  }
  EllipsizeCells(*this);
  SetMinSize(FromDIP(wxSize(200, 100)));
  Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, [this](wxDataViewEvent& event) {
    if (onActivated) onActivated(model_->GetRow(event.GetItem()));
  });
  GetMainWindow()->Bind(wxEVT_KEY_DOWN, &RemoteList::onKey, this);
}

/// Depending on the last click, GTK would apply both keys to the box or both to the name.
void RemoteList::onKey(wxKeyEvent& event) {
  const wxDataViewItem item = GetCurrentItem();
  const int key = event.GetKeyCode();
  const bool enter = key == WXK_RETURN || key == WXK_NUMPAD_ENTER;
  if ((key != WXK_SPACE && !enter) || event.HasAnyModifiers() || !item.IsOk()) return event.Skip();
  const unsigned row = model_->GetRow(item);
  if (enter) {
    if (onActivated) onActivated(row);
    return;
  }
  wxVariant ticked;
  model_->GetValue(ticked, item, kBoxColumn);
  if (onChecked) onChecked(row, !ticked.GetBool());
  changeRows(row, row);
}

void RemoteList::showRows() {
  model_->Reset(static_cast<unsigned>(browser_.rowCount()));
  // Without a current row the list ignores keys on Windows, and it would keep the scroll position of the
  // previous folder.
  if (shownRows() == 0 || GetCurrentItem().IsOk()) return;
  SetCurrentItem(model_->GetItem(0));
  EnsureVisible(model_->GetItem(0));
}

void RemoteList::addRows(std::size_t first) {
  if (first == 0 || browser_.rowCount() - first > kSingly) return showRows();
  while (shownRows() < browser_.rowCount()) model_->RowAppended();
}

void RemoteList::changeRows(std::size_t first, std::size_t last) {
  if (last - first >= kSingly) return GetMainWindow()->Refresh();
  for (std::size_t row = first; row <= last && row < shownRows(); ++row)
    model_->RowChanged(static_cast<unsigned>(row));
}

std::size_t RemoteList::shownRows() const {
  return model_->GetCount();
}

wxRect RemoteList::place(std::size_t row, unsigned column) const {
  wxRect place = GetItemRect(model_->GetItem(static_cast<unsigned>(row)), GetColumn(column));
  if (!place.IsEmpty()) place.SetPosition(ClientToScreen(place.GetPosition()));
  return place;
}

wxRect RemoteList::boxPlace(std::size_t row) const {
  return place(row, kBoxColumn);
}

wxRect RemoteList::namePlace(std::size_t row) const {
  return place(row, kNameColumn);
}

void RemoteList::selectRow(std::size_t row) {
  Select(model_->GetItem(static_cast<unsigned>(row)));
}

}  // namespace quillmoor
