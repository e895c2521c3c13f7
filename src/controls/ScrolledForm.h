// A form of labelled fields in titled groups, one below the other; it scrolls if its pane is too small.
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

/// Create controls in tab order with `group()` as their parent and add each to a row; call `finish` last. The
/// mouse wheel over a control scrolls the form and does not change the control's value, unless it is a list
/// that scrolls.
class ScrolledForm : public wxScrolledWindow {
 public:
  ScrolledForm(wxWindow* parent, const wxString& name);

 protected:
  /// No control may be added afterwards.
  void finish();

  /// All captions of a group get the width of the widest.
  void beginGroup(const wxString& title);
  wxWindow* group() const { return box_; }
  /// The distance between controls in pixels of the screen.
  int gap() const { return FromDIP(6); }
  /// The indentation of what depends on a check box, in pixels of the screen.
  int indent() const { return FromDIP(20); }

  /// A label in front of a field. Create it before the field, so that its mnemonic focuses the field.
  wxStaticText* caption(const wxString& text);
  /// A label in the group, such as a unit, or a line that the program changes.
  wxStaticText* label(const wxString& text, long style = 0, const wxString& name = wxStaticTextNameStr);

  wxCheckBox* checkBox(const wxString& caption, const wxString& name, const wxString& tip = "");
  wxButton* button(const wxString& caption, const wxString& name, const wxString& tip = "");
  /// A text box as wide as `digits` digits.
  wxTextCtrl* textBox(int digits, const wxString& name, const wxString& tip = "", long style = 0);

  enum class Width { own, rest };
  /// The windows `behind` follow on the right of the field at their best size.
  wxSizerItem* addRow(wxStaticText* caption, wxWindow* field, Width width,
                      std::initializer_list<wxWindow*> behind = {}, int indented = 0);
  wxSizerItem* add(wxWindow* control, int indented = 0);
  wxSizerItem* add(wxSizer* row);

  /// Places the windows side by side, in as many columns as fit.
  void addColumns(const std::vector<wxWindow*>& windows);

  /// A line of less contrast that wraps. Its text may change; it takes no room while empty. A new text below
  /// the focused control is scrolled into view.
  wxStaticText* addNote(const wxString& text, int indented = 0);
  void setNote(wxStaticText* note, const wxString& text);

  /// Shows or hides all of a row, which takes no room while it is hidden.
  void showRow(wxSizerItem* row, bool shown);

  /// Scrolls the window into view, as happens to every control that newly gets the focus.
  void bringIntoView(const wxWindow* window);

 private:
  struct Note {
    wxStaticText* label;
    wxSizerItem* row;
    wxSizer* above;  // the row before it; may be null
    wxString text;
    int indented;
  };

  void alignCaptions();
  void placeRows();
  void wrapRows();
  void moveFrames();
  int room() const;
  void colour(const Note& note);
  void wrap(const Note& note);
  /// Sets up the wheel and the inner focus of all controls in the window.
  void prepare(wxWindow* window);
  /// The toolkit's own scrolling fails for windows wider than the view.
  bool ShouldScrollToChildOnFocus(wxWindow*) override { return false; }

  wxBoxSizer* all_;
  wxSizer* group_ = nullptr;
  wxWindow* box_ = nullptr;
  struct Caption {
    wxStaticText* label;
    int indented;
  };
  std::vector<Caption> captions_;  // of the current group
  std::vector<Note> notes_;
  std::vector<wxFlexGridSizer*> columns_;
  int wrappedAt_ = 0;
  const wxWindow* focused_ = nullptr;  // kept while the focus is elsewhere; may dangle, compare only
};

/// Shows the text. Does nothing if it is shown already, so that the caret stays and nothing flickers.
void ShowText(wxStaticText* label, const wxString& text);
void ShowText(wxTextCtrl* box, const wxString& text);
std::string TextOf(const wxTextCtrl& box);

/// Shows the items. The selection keeps its position, or becomes the last item.
void ShowItems(wxListBox& list, const std::vector<std::string>& items);
std::optional<std::size_t> SelectionOf(const wxListBox& list);

}  // namespace quillmoor
