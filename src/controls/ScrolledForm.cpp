#include "controls/ScrolledForm.h"

#include <wx/arrstr.h>
#include <wx/choice.h>
#include <wx/dataview.h>
#include <wx/dcclient.h>
#include <wx/settings.h>
#include <wx/statbox.h>

#include <algorithm>

#include "controls/InnerFocus.h"
#include "controls/Mnemonics.h"
#include "controls/WxColours.h"

namespace quillmoor {
namespace {

constexpr int kScrollStep = 10;  // device-independent pixels
constexpr int kNarrowest = 160;  // width that a note is wrapped to
constexpr double kQuieter = 0.3;

/// As wide as its title. The toolkit's own size depends on the children's current positions, so it would
/// never shrink.
class GroupBox final : public wxStaticBox {
 public:
  using wxStaticBox::wxStaticBox;

 private:
  wxSize DoGetBestSize() const override {
    const wxSize text = GetTextExtent(GetLabelText());
    return {text.x + 2 * text.y, 2 * text.y};
  }
};

bool scrollsItself(const wxWindow* window) {
  if (dynamic_cast<const wxDataViewCtrl*>(window)) return true;
  const auto* const list = dynamic_cast<const wxListBox*>(window);
  return list && static_cast<int>(list->GetCount()) * list->GetCharHeight() * 3 / 2 > list->GetClientSize().y;
}

/// GTK makes a box the lower, the larger its font is.
void makeRoomForText(wxWindow& box) {
  const int lowest = box.GetCharHeight() * 4 / 3;
  if (box.GetEffectiveMinSize().y < lowest) box.SetMinSize({box.GetMinWidth(), lowest});
}

/// Breaks words wider than a line, such as paths, preferably after a separator.
wxString withBrokenWords(wxWindow* window, const wxString& text, int width) {
  wxClientDC screen(window);
  screen.SetFont(window->GetFont());
  wxString broken;
  for (const wxString& line : wxSplit(text, '\n', '\0')) {
    if (!broken.empty()) broken += '\n';
    for (const wxString& word : wxSplit(line, ' ', '\0')) {
      if (!broken.empty() && broken.Last() != '\n') broken += ' ';
      wxString rest = word;
      wxArrayInt ends;
      while (screen.GetTextExtent(rest).x > width && screen.GetPartialTextExtents(rest, ends)) {
        const auto beyond = std::upper_bound(ends.begin(), ends.end(), width);
        const auto fitting = std::max<std::size_t>(static_cast<std::size_t>(beyond - ends.begin()), 1);
        const std::size_t separator = rest.Left(fitting).find_last_of("/\\.-_");
        const std::size_t end = separator == wxString::npos ? fitting : separator + 1;
        broken += rest.Left(end) + '\n';
        rest = rest.Mid(end);
      }
      broken += rest;
    }
  }
  return broken;
}

}  // namespace

ScrolledForm::ScrolledForm(wxWindow* parent, const wxString& name)
    : wxScrolledWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, name),
      all_(new wxBoxSizer(wxVERTICAL)) {
  SetScrollRate(FromDIP(kScrollStep), FromDIP(kScrollStep));
  Bind(wxEVT_CHILD_FOCUS, [this](wxChildFocusEvent& event) {
    event.Skip();
    const wxWindow* const window = event.GetWindow();
    // Do not scroll when the focus returns with the window: the clicked control would move away.
    if (window == this || window == focused_) return;
    bringIntoView(window);
    focused_ = window;
  });
  Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
    for (const Note& note : notes_) colour(note);
    event.Skip();
  });
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    const wxPoint before = GetViewStart();
    wrapRows();
    event.Skip();
    CallAfter([this, before] {
      if (GetViewStart() != before) moveFrames();
      Refresh();  // not every toolkit redraws what has moved
    });
  });
}

void ScrolledForm::beginGroup(const wxString& title) {
  alignCaptions();
  auto* const frame = new wxStaticBoxSizer(new GroupBox(this, wxID_ANY, title), wxVERTICAL);
  box_ = frame->GetStaticBox();
  group_ = new wxBoxSizer(wxVERTICAL);
  frame->Add(group_, wxSizerFlags(1).Expand().Border(wxALL, gap() / 2));
  all_->Add(frame, wxSizerFlags().Expand().Border(wxALL, gap()));
}

wxStaticText* ScrolledForm::caption(const wxString& text) {
  return label(text);
}

wxStaticText* ScrolledForm::label(const wxString& text, long style, const wxString& name) {
  return new wxStaticText(box_, wxID_ANY, text, wxDefaultPosition, wxDefaultSize, style, name);
}

wxCheckBox* ScrolledForm::checkBox(const wxString& caption, const wxString& name, const wxString& tip) {
  auto* const made =
      new wxCheckBox(box_, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
  made->SetToolTip(tip);
  return made;
}

wxButton* ScrolledForm::button(const wxString& caption, const wxString& name, const wxString& tip) {
  auto* const made =
      new wxButton(box_, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
  made->SetToolTip(tip);
  return made;
}

wxTextCtrl* ScrolledForm::textBox(int digits, const wxString& name, const wxString& tip, long style) {
  auto* const made =
      new wxTextCtrl(box_, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, style, wxDefaultValidator, name);
  made->SetMinSize(made->GetSizeFromTextSize(digits * made->GetTextExtent("0").x));
  made->SetToolTip(tip);
  return made;
}

wxSizerItem* ScrolledForm::addRow(wxStaticText* caption, wxWindow* field, Width width,
                                  std::initializer_list<wxWindow*> behind, int indented) {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->AddSpacer(indented);
  row->Add(caption, wxSizerFlags().CenterVertical().Border(wxRIGHT, gap()));
  row->Add(field, wxSizerFlags(width == Width::rest ? 1 : 0).CenterVertical());
  for (wxWindow* const window : behind)
    row->Add(window, wxSizerFlags().CenterVertical().Border(wxLEFT, gap()));
  captions_.push_back({caption, indented});
  return add(row);
}

wxSizerItem* ScrolledForm::add(wxWindow* control, int indented) {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->AddSpacer(indented);
  row->Add(control);
  return add(row);
}

wxSizerItem* ScrolledForm::add(wxSizer* row) {
  return group_->Add(row, wxSizerFlags().Expand().Border(wxALL, gap() / 2));
}

void ScrolledForm::alignCaptions() {
  int widest = 0;
  for (const auto& [text, indented] : captions_) widest = std::max(widest, indented + text->GetBestSize().x);
  for (const auto& [text, indented] : captions_) text->SetMinSize({widest - indented, -1});
  captions_.clear();
}

wxStaticText* ScrolledForm::addNote(const wxString& text, int indented) {
  wxStaticText* const note = label("");
  const wxSizerItemList& rows = group_->GetChildren();
  wxSizer* const above = rows.empty() ? nullptr : rows.GetLast()->GetData()->GetSizer();
  notes_.push_back({note, add(note, indented), above, text, indented});
  colour(notes_.back());
  wrap(notes_.back());
  return note;
}

/// Gives the note a little less contrast than other text of the current theme.
void ScrolledForm::colour(const Note& note) {
  const Rgb ink = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  const Rgb paper = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
  note.label->SetForegroundColour(ToWx(ReadableOn(Mix(ink, paper, kQuieter), paper)));
}

void ScrolledForm::setNote(wxStaticText* note, const wxString& text) {
  const auto known =
      std::find_if(notes_.begin(), notes_.end(), [&](const Note& each) { return each.label == note; });
  if (known == notes_.end() || known->text == text) return;
  known->text = text;
  wrap(*known);
  placeRows();
  wxWindow* const focus = FindFocus();
  if (text.empty() || !focus || !known->above || !known->above->GetItem(focus, true)) return;
  bringIntoView(note);
  bringIntoView(focus);
}

void ScrolledForm::showRow(wxSizerItem* row, bool shown) {
  if (row->IsShown() == shown) return;
  row->Show(shown);
  placeRows();
}

void ScrolledForm::placeRows() {
  FitInside();
  Layout();
  Refresh();  // not every toolkit redraws what has moved
}

/// The width available to a row. Always deducts the scroll bar, which otherwise could make lines wrap, and so
/// appear and disappear by turns.
int ScrolledForm::room() const {
  const int edges = 6 * gap() + wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this);
  return std::max(GetSize().x - edges, FromDIP(kNarrowest));
}

void ScrolledForm::wrap(const Note& note) {
  const int width = room() - note.indented;
  note.label->SetLabel(wxControl::EscapeMnemonics(withBrokenWords(note.label, note.text, width)));
  note.label->Wrap(width);
  note.row->Show(!note.text.empty());
}

void ScrolledForm::addColumns(const std::vector<wxWindow*>& windows) {
  auto* const grid = new wxFlexGridSizer(static_cast<int>(windows.size()), gap(), 2 * gap());
  for (wxWindow* const window : windows) grid->Add(window);
  add(grid);
  columns_.push_back(grid);
}

void ScrolledForm::wrapRows() {
  if (GetSize().x == wrappedAt_) return;
  wrappedAt_ = GetSize().x;
  for (const Note& note : notes_) wrap(note);
  for (wxFlexGridSizer* const grid : columns_) {
    int columns = static_cast<int>(grid->GetItemCount());
    do {
      grid->SetCols(columns);
    } while (grid->CalcMin().x > room() && --columns > 0);
  }
  FitInside();
}

/// When a new size makes the form scroll, GTK does not move the frames: it ignores a position that is set
/// while it assigns sizes.
void ScrolledForm::moveFrames() {
  for (wxWindow* const child : GetChildren()) {
    const wxPoint place = child->GetPosition();
    child->Move(place + wxPoint(0, 1));
    child->Move(place);
  }
}

void ScrolledForm::finish() {
  alignCaptions();
  prepare(this);
  FollowMnemonics(*this);
  SetSizer(all_);
  FitInside();
}

/// Keeps a margin of one scroll step around the window. Shows the beginning of what does not fit.
void ScrolledForm::bringIntoView(const wxWindow* window) {
  const auto* const list = dynamic_cast<const wxDataViewCtrl*>(window->GetParent());
  if (list) window = list;  // including its captions
  wxPoint step;
  GetScrollPixelsPerUnit(&step.x, &step.y);
  const auto scrolled = [](int from, int begin, int length, int room, int unit) {
    const int back = begin - unit;
    const int by = back < 0 ? back : std::clamp(begin + length + unit - room, 0, back);
    return std::max(from + (by + (by < 0 ? 1 - unit : unit - 1)) / unit, 0);
  };
  const wxPoint view = GetViewStart(), place = ScreenToClient(window->GetScreenPosition());
  const wxSize size = window->GetSize(), room = GetClientSize();
  Scroll(scrolled(view.x, place.x, size.x, room.x, step.x),
         scrolled(view.y, place.y, size.y, room.y, step.y));
}

void ScrolledForm::prepare(wxWindow* window) {
  if (dynamic_cast<wxDataViewCtrl*>(window)) return;  // its parts behave as it does
  for (wxWindow* const child : window->GetChildren()) {
    const bool choice = dynamic_cast<wxChoice*>(child);
    if (choice) ReportInnerFocus(*child);
    if (choice || dynamic_cast<wxTextCtrl*>(child)) makeRoomForText(*child);
    child->Bind(wxEVT_MOUSEWHEEL, [this, child](wxMouseEvent& event) {
      scrollsItself(child) ? event.Skip() : HandleOnMouseWheel(event);
    });
    prepare(child);
  }
}

void ShowText(wxStaticText* label, const wxString& text) {
  if (label->GetLabelText() != text) label->SetLabelText(text);
}

void ShowText(wxTextCtrl* box, const wxString& text) {
  if (TextOf(*box) != text.utf8_string()) box->ChangeValue(text);
}

std::string TextOf(const wxTextCtrl& box) {
  return box.GetValue().utf8_string();
}

void ShowItems(wxListBox& list, const std::vector<std::string>& items) {
  const int selected = list.GetSelection();
  wxArrayString shown;
  for (const std::string& item : items) shown.Add(wxString::FromUTF8(item));
  list.Set(shown);
  const int last = static_cast<int>(items.size()) - 1;
  if (selected != wxNOT_FOUND && last >= 0) list.SetSelection(std::min(selected, last));
}

std::optional<std::size_t> SelectionOf(const wxListBox& list) {
  const int selected = list.GetSelection();
  if (selected == wxNOT_FOUND) return std::nullopt;
  return static_cast<std::size_t>(selected);
}

}  // namespace quillmoor
