// A form of labelled fields in titled groups, one below the other; it scrolls where its pane is too small.
#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/listbox.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace quillmoor {

/// Controls are made with `group()` as their parent, in the order of the Tab key, and then given a row.
/// `finish` comes last. A wheel that turns over a control scrolls the form and leaves the control's value
/// alone, unless it is a list with items out of view.
class ScrolledForm : public wxScrolledWindow {
 public:
  ScrolledForm(wxWindow* parent, const wxString& name);

 protected:
  /// Nothing may be added afterwards.
  void finish();

  /// The captions of a group are as wide as its widest.
  void beginGroup(const wxString& title);
  wxWindow* group() const { return box_; }
  /// Device-independent pixels between controls, in those of the screen.
  int gap() const { return FromDIP(6); }
  /// As far as what depends on a check box stands in from it.
  int indent() const { return FromDIP(20); }

  /// A label to be put before a field; make it before the field, so that its mnemonic leads there.
  wxStaticText* caption(const wxString& text);
  /// A label of the group, such as a unit, or a line that the program writes.
  wxStaticText* label(const wxString& text, long style = 0, const wxString& name = wxStaticTextNameStr);

  wxCheckBox* checkBox(const wxString& caption, const wxString& name, const wxString& tip = "");
  wxButton* button(const wxString& caption, const wxString& name, const wxString& tip = "");
  /// As wide as so many digits.
  wxTextCtrl* textBox(int digits, const wxString& name, const wxString& tip = "", long style = 0);

  enum class Width { own, rest };
  /// `behind` stand to the right of the field, as wide as they want to be.
  void addRow(wxStaticText* caption, wxWindow* field, Width width,
              std::initializer_list<wxWindow*> behind = {}, int indented = 0);
  wxSizerItem* add(wxWindow* control, int indented = 0);
  wxSizerItem* add(wxSizer* row);

  /// Side by side in columns, as many as there is room for.
  void addColumns(const std::vector<wxWindow*>& windows);

  /// A quieter line that wraps; what it says may change, and it takes no room while it says nothing. What is
  /// said anew below the control that has the focus comes into view.
  wxStaticText* addNote(const wxString& text, int indented = 0);
  void setNote(wxStaticText* note, const wxString& text);

  /// As happens with every control that gets the focus, unless it had it before.
  void bringIntoView(const wxWindow* window);

 private:
  struct Note {
    wxStaticText* label;
    wxSizerItem* row;
    wxSizer* above;  // the row before it, or none
    wxString text;
    int indented;
  };

  void alignCaptions();
  void wrapRows();
  void moveFrames();
  int room() const;
  void colour(const Note& note);
  void wrap(const Note& note);
  /// The controls in the window: their wheel, and the focus of their parts.
  void prepare(wxWindow* window);
  /// The toolkit's own way of it leaves out what is wider than the view.
  bool ShouldScrollToChildOnFocus(wxWindow*) override { return false; }

  wxBoxSizer* all_;
  wxSizer* group_ = nullptr;
  wxWindow* box_ = nullptr;
  struct Caption {
    wxStaticText* label;
    int indented;
  };
  std::vector<Caption> captions_;  // of the group
  std::vector<Note> notes_;
  std::vector<wxFlexGridSizer*> columns_;
  int wrappedAt_ = 0;
  const wxWindow* focused_ = nullptr;  // also while the focus is outside; only to be compared
};

/// Shows the text, and does nothing where it stands already: a caret stays where it is, nothing flickers.
void ShowText(wxStaticText* label, const wxString& text);
void ShowText(wxTextCtrl* box, const wxString& text);
std::string TextOf(const wxTextCtrl& box);

/// Shows the items; what is selected is then at the same position, or the last one.
void ShowItems(wxListBox& list, const std::vector<std::string>& items);
std::optional<std::size_t> SelectionOf(const wxListBox& list);

}  // namespace quillmoor
