// The form of the backup options.
#pragma once

#include <wx/listbox.h>
#include <wx/radiobut.h>

#include <array>
#include <functional>
#include <memory>

#include "controls/ScrolledForm.h"
#include "profiles/OptionsEditor.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

class frmOptions : public ScrolledForm {
 public:
  /// Runs use `settings`, which must outlive this. Without `prompts` the form shows its own windows.
  frmOptions(wxWindow* parent, ApplicationSettings& settings, std::unique_ptr<UserPrompts> prompts = nullptr);

  wxRadioButton* optFull;
  wxRadioButton* optIncremental;
  wxCheckBox* chkUniqueBackup;
  wxStaticText* lblUniqueBackupNote;
  wxCheckBox* chkNamesAsListed;
  wxCheckBox* chkCreateZip;
  wxCheckBox* chkSplitZip;
  wxStaticText* lblZipSpanSize;
  wxTextCtrl* txtZipSpanSize;
  wxStaticText* lblZipSpanUnit;
  wxStaticText* lblSpanSizeNote;
  wxCheckBox* chkZipSelfExtract;
  wxStaticText* lblZipPassword;
  wxTextCtrl* txtZipPassword;
  wxStaticText* lblPasswordNote;
  std::array<wxStaticText*, kRunTexts.size()> lblRunNote{};  // of the addresses
  wxListBox* lstZipCopies;
  wxButton* cmdAddCopy;
  wxButton* cmdRemoveCopy;
  std::array<wxTextCtrl*, kRunTexts.size()> txtRun;  // as in kRunTexts
  wxButton* cmdBrowseRunBefore;
  wxButton* cmdBrowseRunAfter;

 private:
  void layOutMode();
  void layOutNames();
  void layOutArchive();
  void layOutCopies();
  void layOutRunTexts();
  void connect();
  /// Changes the editor for a control's event, and shows the result.
  template <class Event>
  void on(wxWindow* control, const wxEventTypeTag<Event>& event, std::function<void()> change);
  void addCopy();
  void removeCopy();
  void show();
  void showCopies();

  std::unique_ptr<UserPrompts> prompts_;
  OptionsEditor editor_;
};

}  // namespace quillmoor
