// What the site profile form shows and does, without the form.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <set>
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
/// ID of the first profile item.
inline constexpr int kFirstProfileItem = 30101;

/// The lines of the folder list while it is empty.
inline constexpr std::array<std::string_view, 4> kNoFolders = {
    "No folders selected to backup", " Click the Connect button to connect",
    " to the FTP site and select the directories", "  to backup."};

/// Which of the proxy's boxes are enabled, each with its label.
struct ProxyBoxes {
  bool host = false, port = false, username = false, password = false;
  bool operator==(const ProxyBoxes&) const = default;
};

/// The form writes into `shown` what the user types and ticks, calls a member for each command and then shows
/// what the public fields say. Only this editor writes the profile file.
class SiteProfileEditor {
 public:
  /// Shows an empty profile and lists the stored ones. `prompts` must outlive this; `now` is the time of a
  /// first save.
  SiteProfileEditor(std::string profilesFile, UserPrompts& prompts,
                    std::function<LocalDateTime()> now = LocalNow);

  /// The fields of the form. `ProxyType` is always a position in kProxyTypes, `Security` one in
  /// kSecurityTypes; a flag is 1 or 0.
  SiteProfile shown;
  /// The add-folder box.
  std::string txtAddFolder;
  /// The items of the group "Current Profiles".
  std::vector<TaskItem> profileItems;
  /// Key of the field (a key of kProfileFields, "name" or "Folders") that the last command puts the focus on;
  /// "" leaves the focus where it is.
  std::string_view focus;
  /// Called when the user has confirmed the exit.
  std::function<void()> onExit;

  /// Click on an item of the task panel.
  void ItemClicked(int id);

  /// A new profile. RunURL, RunProgram and DefaultDir deliberately keep their values.
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

  /// Adds the text of the add-folder box to the folder list.
  void AddFolder();
  /// Adds folders ticked in the remote browser that are not in the list yet. Returns how many.
  std::size_t AddFolders(const std::vector<std::string>& folders);
  /// Removes the selected rows from the list.
  void RemoveFolders(const std::vector<std::size_t>& rows);
  void ClearFolders();

  /// The kind of encryption was chosen, a position in kSecurityTypes.
  void ChooseSecurity(std::int32_t security);
  /// A login of that profile without encryption has shown that the server offers TLS.
  void NoteTlsOffered(const SiteProfile& site);

  void BrowseSaveTo();
  void BrowseRunProgram();

  /// The connect button: the profile as the form shows it, saved or not, to open the remote browser with;
  /// std::nullopt when the user has been told why not.
  std::optional<SiteProfile> Connect();

  ProxyBoxes proxyBoxesEnabled() const;
  /// MinData and MaxData with their labels.
  bool portRangeEnabled() const { return shown.ManualPort == 1 && shown.PASV != 1; }
  bool connectEnabled() const { return !shown.Host.empty(); }
  /// A note beside the password box; "" when there is none.
  std::string passwordNote() const;
  /// A note below the choice of the encryption; "" when there is none.
  std::string securityNote() const;

  /// "" for a new profile that has not been saved.
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
  bool opened_ = false;  // a stored profile, not one that began as a new one
  bool securityUnreadable_ = false;
  std::set<std::string> tlsOffered_;  // by servers, each with its port
};

}  // namespace quillmoor
