// What the dial-up part of the settings form shows and does, without the form.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "connectivity/DialUp.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// The form calls a member for each of its events and then shows what the public fields say. A dial that
/// fails raises nothing; the label shows it. RegistryError is raised when a value cannot be stored; the value
/// is used all the same: an entry until `LoadEntries`, the others until the program ends.
class DialUpPanel {
 public:
  /// Both must outlive this. Sets the component's state-change handler.
  DialUpPanel(DialUp& dialUp, ApplicationSettings& settings);
  ~DialUpPanel();
  DialUpPanel(const DialUpPanel&) = delete;
  DialUpPanel& operator=(const DialUpPanel&) = delete;

  bool cmdDialEnabled = true;
  bool cmdHangUpEnabled = false;
  std::string lblRasStatus;

  /// The items of cboConnections when the form is loaded, and the selected one: the entry with exactly the
  /// stored name. A stored entry that is no longer in the phonebook stays stored but is not selected.
  struct EntryList {
    std::vector<std::string> names;
    std::optional<std::size_t> selected;
  };
  EntryList LoadEntries();

  /// Click on cboConnections with this text in it.
  void ChooseEntry(const std::string& text);
  /// Click on cmdDial.
  void Dial();
  /// Click on cmdHangUp.
  void HangUp();
  /// Tick of tmrOnlineStatus, every 100 ms while the form is loaded.
  void RefreshStatus();
  /// Clicks on the check boxes chkAutoDial and chkAutoHangUp, with their new state.
  void SetAutoDial(bool checked);
  void SetAutoHangUp(bool checked);

 private:
  void showButtons(bool dial, bool hangUp);

  DialUp& dialUp_;
  ApplicationSettings& settings_;
};

}  // namespace quillmoor
