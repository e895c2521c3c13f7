#include "controls/ScrolledForm.h"

#include <wx/listbox.h>
#include <wx/settings.h>
#include <wx/statbox.h>

#include <algorithm>

#include "controls/WxColours.h"

namespace quillmoor {
namespace {

constexpr int kScrollStep = 10;  // device-independent pixels
constexpr int kNarrowest = 160;  // that a note is wrapped to
constexpr double kQuieter = 0.3;

}  // namespace

ScrolledForm::ScrolledForm(wxWindow* parent, const wxString& name)
    : wxScrolledWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, name),
      all_(new wxBoxSizer(wxVERTICAL)) {
  SetScrollRate(FromDIP(kScrollStep), FromDIP(kScrollStep));
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    wrapNotes();
    event.Skip();
  });
}

void ScrolledForm::beginGroup(const wxString& title) {
  alignCaptions();
  auto* const frame = new wxStaticBoxSizer(wxVERTICAL, this, title);
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

void ScrolledForm::addRow(wxStaticText* caption, wxWindow* field, Width width,
                          std::initializer_list<wxWindow*> behind, int indented) {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->AddSpacer(indented);
  row->Add(caption, wxSizerFlags().CenterVertical().Border(wxRIGHT, gap()));
  row->Add(field, wxSizerFlags(width == Width::rest ? 1 : 0).CenterVertical());
  for (wxWindow* const window : behind)
    row->Add(window, wxSizerFlags().CenterVertical().Border(wxLEFT, gap()));
  add(row);
  captions_.push_back({caption, indented});
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
  const Rgb ink = FromWx(GetForegroundColour());
  const Rgb paper = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
  note->SetForegroundColour(ToWx(ReadableOn(Mix(ink, paper, kQuieter), paper)));
  notes_.push_back({note, add(note, indented), text, indented});
  wrap(notes_.back());
  return note;
}

void ScrolledForm::setNote(wxStaticText* note, const wxString& text) {
  const auto known =
      std::find_if(notes_.begin(), notes_.end(), [&](const Note& each) { return each.label == note; });
  if (known == notes_.end() || known->text == text) return;
  known->text = text;
  wrap(*known);
  FitInside();
  Layout();
}

/// The scroll bar counts as there: it must not come and go with the lines that it leaves room for.
void ScrolledForm::wrap(const Note& note) {
  note.label->SetLabel(wxControl::EscapeMnemonics(note.text));
  const int edges = 6 * gap() + wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this) + note.indented;
  note.label->Wrap(std::max(GetSize().x - edges, FromDIP(kNarrowest)));
  note.row->Show(!note.text.empty());
}

void ScrolledForm::wrapNotes() {
  if (GetSize().x == wrappedAt_) return;
  wrappedAt_ = GetSize().x;
  for (const Note& note : notes_) wrap(note);
  FitInside();
}

void ScrolledForm::finish() {
  alignCaptions();
  keepFromWheel(this);
  SetSizer(all_);
  FitInside();
}

void ScrolledForm::keepFromWheel(wxWindow* window) {
  for (wxWindow* const child : window->GetChildren()) {
    if (dynamic_cast<wxListBox*>(child)) continue;
    child->Bind(wxEVT_MOUSEWHEEL, [this](wxMouseEvent& event) { HandleOnMouseWheel(event); });
    keepFromWheel(child);
  }
}

void ShowText(wxStaticText* label, const wxString& text) {
  if (label->GetLabelText() != text) label->SetLabelText(text);
}

void ShowText(wxTextCtrl* box, const wxString& text) {
  if (box->GetValue() != text) box->ChangeValue(text);
}

}  // namespace quillmoor
