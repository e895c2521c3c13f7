// The fields of a site profile, with its folder list: every control writes into the editor and shows what has
// become of it.
#pragma once

#include <wx/choice.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "controls/ReportControl.h"
#include "controls/ScrolledForm.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/SiteProfileEditor.h"

namespace quillmoor {

class SiteFields : public ScrolledForm {
 public:
  /// Both must outlive this; `settings` decides on what is said of network paths.
  SiteFields(wxWindow* parent, SiteProfileEditor& editor, const ApplicationSettings& settings);

  /// Shows all fields as the editor has them.
  void show();
  /// Brings what is said below the boxes up to date: it depends on a setting, too.
  void showNotes();
  /// The connect button was clicked.
  std::function<void()> onConnect;

  /// Puts the focus on the field of that key and brings it into view.
  void putFocusOn(std::string_view key);

  /// The box of a text: "name" or a key of kProfileTexts. Its window name is "txt" and the key.
  wxTextCtrl* box(std::string_view key) const { return textOf(key).box; }
  wxStaticText* captionOf(std::string_view key) const { return textOf(key).caption; }
  /// What is said below that box; not shown while there is nothing to say.
  wxStaticText* noteOf(std::string_view key) const { return textOf(key).note; }

  wxCheckBox* chkStatus;
  wxCheckBox* chkPASV;
  wxCheckBox* chkManualPort;
  wxChoice* cboProxyType;
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
  /// `behind` makes what stands behind the box.
  void addText(std::string_view key, const char* caption, Size size, long style = 0,
               const std::function<wxWindow*()>& behind = {});
  wxCheckBox* addCheck(std::string_view key, const char* caption, std::int16_t SiteProfile::*flag);
  wxButton* browseButton(const char* caption, const char* name, const char* accessibleName,
                         std::function<void()> browse);
  void layOutSite();
  void layOutFolders();
  void layOutConnection();
  void layOutProxy();
  void layOutActions();

  /// Selects the whole text with every focus.
  void selectsAll(wxTextCtrl* text);
  /// Changes the editor and shows what has become of it.
  void change(const std::function<void()>& command);
  void showFolders();
  void enableControls();

  SiteProfileEditor& editor_;
  const ApplicationSettings& settings_;
  std::vector<Text> texts_;
  std::vector<std::string> shownFolders_;
};

}  // namespace quillmoor
