// Shows read-only rich text that can be selected, copied and searched.
#pragma once

#include <wx/textctrl.h>

#include <string>

#include "controls/RtfReader.h"

namespace quillmoor {

/// A multi-line text control, so that keys, selection, copying and screen readers work as usual. Text without
/// a colour gets the system's; colours that are unreadable on the system's background are shaded, also after
/// a change of the theme. `label` is the name for screen readers.
class RichTextView : public wxTextCtrl {
 public:
  RichTextView(wxWindow* parent, wxWindowID id, const wxString& label);

  /// Shows a document from its beginning. A hidden view, such as in a background tab, is filled only when it
  /// is shown, which makes the program's start faster.
  void ShowDocument(RtfDocument document);

  /// Shows a file. Returns whether it is shown. A missing file leaves the view empty; for an unreadable one
  /// the view shows the error.
  bool LoadFile(const std::string& path);

  void OnInternalIdle() override;

 private:
  void fill();
  void appendSpace(int twips);

  RtfDocument document_;
  bool toFill_ = false;
};

}  // namespace quillmoor
