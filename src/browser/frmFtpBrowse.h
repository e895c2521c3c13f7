// The window "Browse FTP Site": browses the site of the profile being edited and adds ticked folders to it.
#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/combobox.h>
#include <wx/frame.h>
#include <wx/timer.h>

#include <memory>
#include <string>

#include "browser/BrowserView.h"
#include "browser/RemoteBrowser.h"
#include "browser/RemoteList.h"
#include "controls/LogView.h"
#include "controls/WindowPrompts.h"

namespace quillmoor {

class frmFtpBrowse : public wxFrame, private BrowserView {
 public:
  /// `settings` must outlive the window, and so must what `editing` changes until `unload`.
  frmFtpBrowse(wxWindow* parent, const SiteProfile& site, const ApplicationSettings& settings,
               RemoteBrowser::Editing editing);
  ~frmFtpBrowse() override;

  /// Hides the window at once, whatever is in progress; it is destroyed when its session has ended.
  void unload();

  const RemoteBrowser& browser() const { return *browser_; }

  wxComboBox* cmbRemoteDir;
  wxButton* cmdChDir;
  wxButton* cmdRefresh;
  RemoteList* lvwRemote;
  wxButton* cmdSelectAll;
  wxButton* cmdUnSelectAll;
  wxCheckBox* chkFoldersOnly;
  wxButton* cmdAdd;
  wxButton* cmdClose;
  LogView* txtLog;
  wxTimer Timer1;
  wxTimer tmrKeepAlive;

 private:
  void layOut();
  void connectControls();
  void place(const BrowserPlacement& placement);
  BrowserPlacement placement() const;
  void takeTypedFolder();
  void changeFolder();

  // BrowserView
  void rowsCleared() override { lvwRemote->showRows(); }
  void rowsAdded(std::size_t first) override { lvwRemote->addRows(first); }
  void rowsChanged(std::size_t first, std::size_t last) override { lvwRemote->changeRows(first, last); }
  void showFolder(const std::string& path, bool isNew) override;
  void logChanged() override { txtLog->logChanged(); }
  void showBusy(bool busy) override;
  void closed() override { closed_ = true; }

  WindowPrompts prompts_;
  std::unique_ptr<RemoteBrowser> browser_;
  wxTimer tmrEvents_;
  wxString shownFolder_;  // what the program last put into the box or took from it
  wxString beforeList_;   // the box's text when its list was opened
  bool listDropped_ = false;
  bool listEscaped_ = false;
  bool takingEvents_ = false;
  bool closing_ = false;
  bool closed_ = false;
};

}  // namespace quillmoor
