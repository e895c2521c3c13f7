// Shows rich text to be read, selected, copied and searched, not changed.
#pragma once

#include <wx/textctrl.h>

#include <string>

#include "controls/RtfReader.h"

namespace quillmoor {

/// A multi-line text control, so that keys, selection, copying and screen readers work as everywhere. Text
/// that has no colour of its own takes the system's; colours that could not be read on the system's
/// background are shaded until they can, also when the user changes the theme. The name for screen readers is
/// the label given.
class RichTextView : public wxTextCtrl {
 public:
  RichTextView(wxWindow* parent, wxWindowID id, const wxString& label);

  /// Shows a document from its beginning. While the view is not on the screen, as in a tab behind others, its
  /// text is not made yet: that would take its share of the program's start.
  void ShowDocument(RtfDocument document);

  /// Shows a file. One that is not there leaves the view empty; of one that cannot be read the
  /// view says what is wrong. Returns whether the file is shown.
  bool LoadFile(const std::string& path);

  void OnInternalIdle() override;

 private:
  void fill();
  void appendSpace(int twips);

  RtfDocument document_;
  bool toFill_ = false;
};

}  // namespace quillmoor
