// What the site profile form shows and does, without the form.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system/LocalTime.h"
#include "profiles/SiteProfile.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

/// An item of the task panel, known by its ID.
struct TaskItem {
  int id;
  std::string caption;
};

inline constexpr std::string_view kCommandGroup = "Sites Profiles";
inline constexpr std::string_view kProfileGroup = "Current Profiles";

struct CommandItem {
  int id;
  std::string_view caption;
};
inline constexpr int kAddItem = 30001, kDeleteItem = 30002, kSaveItem = 30003, kExitItem = 30005;
inline constexpr std::array<CommandItem, 4> kCommandItems = {
    {{kAddItem, "Add"}, {kDeleteItem, "Delete"}, {kSaveItem, "Save"}, {kExitItem, "Exit"}}};
/// The profile items count on from here.
inline constexpr int kFirstProfileItem = 30101;

/// The lines of the folder list while it is empty.
inline constexpr std::array<std::string_view, 4> kNoFolders = {
    "No folders selected to backup", " Click the Connect button to connect",
    " to the FTP site and select the directories", "  to backup."};

/// Which of the proxy's boxes, each with its label, can be used.
struct ProxyBoxes {
  bool host = false, port = false, username = false, password = false;
  bool operator==(const ProxyBoxes&) const = default;
};

/// What the remote browser is opened with: the profile as it stands in the form, saved or not.
struct BrowsedSite {
  std::string host, userId, password, port, timeout, account, defaultDir;
  bool passive = true;
  std::int16_t proxyType = 0;
  std::string proxyHost, proxyPort, proxyUsername, proxyPassword;
};

/// The form writes into `shown` what the user types and ticks, calls a member for each command and then shows
/// what the public fields say. The profile file belongs to this editor.
class SiteProfileEditor {
 public:
  /// Shows an empty profile and lists the stored ones. `prompts` must outlive this; `now` dates a first save.
  SiteProfileEditor(std::string profilesFile, UserPrompts& prompts,
                    std::function<LocalDateTime()> now = LocalNow);

  /// The fields of the form. `ProxyType` is always a position in kProxyTypes; a flag is 1 or 0.
  SiteProfile shown;
  /// The add-folder box.
  std::string txtAddFolder;
  /// The items of the group "Current Profiles".
  std::vector<TaskItem> profileItems;
  /// Key of the field (a key of kProfileTexts, "name" or "Folders") that the last command puts the focus on;
  /// "" leaves the focus where it is.
  std::string_view focus;
  /// The user has confirmed that the application is to be left.
  std::function<void()> onExit;

  /// Click on an item of the task panel.
  void ItemClicked(int id);

  /// A new profile. RunURL, RunProgram and DefaultDir keep what they show, on purpose.
  void Add();
  /// Opens a stored profile.
  void EditSiteProfile(const std::string& name);
  /// The fields of that profile; for "" those of a new one.
  void LoadSiteProfile(const std::string& name);
  /// Checks, corrects the numbers and writes. False when the user has been told why nothing was written.
  bool SaveSiteProfile();
  void DeleteSiteProfile();
  /// Rebuilds the list of stored profiles.
  void LoadSitesInfo();
  void Exit();

  /// Puts what the add-folder box holds into the folder list.
  void AddFolder();
  /// Folders ticked in the remote browser; those already in the list are passed over. How many are new.
  std::size_t AddFolders(const std::vector<std::string>& folders);
  /// Takes the selected rows out of the list.
  void RemoveFolders(const std::vector<std::size_t>& rows);
  void ClearFolders();

  void BrowseSaveTo();
  void BrowseRunProgram();

  /// The connect button: what to open the remote browser with, nothing when the user has been told why not.
  std::optional<BrowsedSite> Connect();

  ProxyBoxes proxyBoxesEnabled() const;
  /// MinData and MaxData with their labels.
  bool portRangeEnabled() const { return shown.ManualPort == 1 && shown.PASV != 1; }
  bool connectEnabled() const { return !shown.Host.empty(); }
  /// A line beside the password box, "" when there is nothing to say.
  std::string passwordNote() const;

  /// "" while a new profile is being made.
  const std::string& currentName() const { return currentName_; }
  bool editMode() const { return editMode_; }

 private:
  void reset(const std::string& name);
  bool refuse(std::string_view key, std::string text);
  bool passesChecks();

  const std::string file_;
  UserPrompts& prompts_;
  const std::function<LocalDateTime()> now_;
  std::string currentName_;
  bool editMode_ = false;
  bool opened_ = false;  // from the stored ones, and not begun as a new one
};

}  // namespace quillmoor
