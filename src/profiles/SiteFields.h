// The fields of a site profile, with its folder list: every control writes into the editor and then shows the
// editor's value.
#pragma once

#include <wx/choice.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "controls/ReportControl.h"
#include "controls/ScrolledForm.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/SiteProfileEditor.h"

namespace quillmoor {

class SiteFields : public ScrolledForm {
 public:
  /// Both must outlive this; the note on network paths depends on `settings`.
  SiteFields(wxWindow* parent, SiteProfileEditor& editor, const ApplicationSettings& settings);

  /// Shows all fields as the editor has them.
  void show();
  /// Updates the notes below the fields, which also depend on a setting.
  void showNotes();
  /// The connect button was clicked.
  std::function<void()> onConnect;

  /// Puts the focus on the field of that key and brings it into view.
  void putFocusOn(std::string_view key);

  /// The box of a text: "name" or a key of kProfileFields. Its window name is "txt" and the key.
  wxTextCtrl* box(std::string_view key) const { return textOf(key).box; }
  wxStaticText* captionOf(std::string_view key) const { return textOf(key).caption; }
  /// The note below that box; hidden while it is empty.
  wxStaticText* noteOf(std::string_view key) const { return textOf(key).note; }

  wxCheckBox* chkStatus;
  wxCheckBox* chkPASV;
  wxCheckBox* chkManualPort;
  wxChoice* cboSecurity;
  wxStaticText* lblSecurityNote;
  wxChoice* cboProxyType;
  wxButton* cmdForgetCertificate;
  wxButton* cmdBrowseSaveTo;
  wxButton* cmdBrowseRunProgram;
  wxButton* cmdConnect;
  ReportControl* lvwFolders;
  wxTextCtrl* txtAddFolder;
  wxButton* cmdAddFolder;
  wxButton* cmdRemoveFolders;
  wxButton* cmdClearFolders;

 private:
  struct Text {
    std::string_view key;
    std::string SiteProfile::*value;
    wxStaticText* caption;
    wxTextCtrl* box;
    wxStaticText* note;
  };
  const Text& textOf(std::string_view key) const;

  enum class Size { number, rest };
  /// `after` makes the control to the right of the box.
  wxSizerItem* addText(std::string_view key, const char* caption, Size size, long style = 0,
                       const std::function<wxWindow*()>& after = {});
  template <std::size_t count>
  wxChoice* addChoice(std::string_view key, const char* caption, const std::array<const char*, count>& texts);
  wxCheckBox* addCheck(std::string_view key, const char* caption);
  /// A button beside a box, which changes its text by a command of the editor.
  wxButton* buttonOf(const char* caption, const char* name, const char* accessibleName,
                     std::function<void()> command);
  void layOutSite();
  void layOutFolders();
  void layOutConnection();
  void layOutProxy();
  void layOutActions();

  /// Selects the whole text whenever the box gets the focus.
  void selectsAll(wxTextCtrl* text);
  /// Changes the editor and shows the result.
  void change(const std::function<void()>& command);
  void showFolders();
  void enableControls();

  SiteProfileEditor& editor_;
  const ApplicationSettings& settings_;
  std::vector<Text> texts_;
  std::vector<std::pair<std::int32_t SiteProfile::*, wxCheckBox*>> checks_;
  std::vector<std::string> shownFolders_;
  wxSizerItem* certificate_;  // the row, shown while there is one
};

}  // namespace quillmoor
