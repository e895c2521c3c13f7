#include "profiles/SiteProfileEditor.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "base/Ascii.h"
#include "profiles/NameOrder.h"
#include "profiles/ProfileHints.h"
#include "profiles/ProfileText.h"
#include "profiles/SiteProfileStore.h"

namespace quillmoor {
namespace {

/// By the position in kProxyTypes.
constexpr std::array<ProxyBoxes, kProxyTypes.size()> kProxyBoxes = {{{},
                                                                     {true, true, true, false},
                                                                     {true, true, true, true},
                                                                     {true, true, true, true},
                                                                     {true, true, true, true},
                                                                     {true, true, false, false},
                                                                     {true, true, false, false},
                                                                     {true, true, false, false}}};

struct RequiredText {
  std::string_view key;
  const char* message;
};
/// In the order of the checks, after the name. The spelling "post" is part of the message.
constexpr RequiredText kRequired[] = {{"Host", "Please enter the ftp host name or IP address"},
                                      {"UserID", "Please enter the ftp account User ID"},
                                      {"Password", "Please enter the FTP account Password"},
                                      {"Port", "Please enter the FTP post, the default is 21"},
                                      {"SaveTo", "Please select a directory to save to."}};

bool isBlank(const std::string& text) {
  return TrimmedText(text).empty();
}

std::string serverOf(const SiteProfile& site) {
  return AsciiLower(TrimmedText(site.Host)) + ":" + TrimmedText(site.Port);
}

}  // namespace

SiteProfileEditor::SiteProfileEditor(std::string profilesFile, UserPrompts& prompts,
                                     std::function<LocalDateTime()> now)
    : file_(std::move(profilesFile)), prompts_(prompts), now_(std::move(now)) {
  LoadSitesInfo();
}

void SiteProfileEditor::ItemClicked(int id) {
  switch (id) {
    case kAddItem:
      return Add();
    case kDeleteItem:
      return DeleteSiteProfile();
    case kSaveItem:
      SaveSiteProfile();
      return LoadSitesInfo();  // saved or not
    case kExitItem:
      return Exit();
    default:
      for (const TaskItem& item : profileItems) {
        if (item.id == id) return EditSiteProfile(std::string(item.caption));
      }
  }
}

void SiteProfileEditor::reset(const std::string& name) {
  SiteProfile defaults;
  defaults.name = name;
  // These three deliberately keep their values.
  defaults.RunURL = shown.RunURL;
  defaults.RunProgram = shown.RunProgram;
  defaults.DefaultDir = shown.DefaultDir;
  shown = std::move(defaults);
  securityUnreadable_ = false;
  focus = "";
}

void SiteProfileEditor::Add() {
  currentName_.clear();
  editMode_ = opened_ = false;
  LoadSiteProfile("");
}

void SiteProfileEditor::EditSiteProfile(const std::string& name) {
  currentName_ = name;
  editMode_ = opened_ = true;
  LoadSiteProfile(name);
}

void SiteProfileEditor::LoadSiteProfile(const std::string& name) {
  reset(name);
  if (name.empty()) return;
  shown = quillmoor::LoadSiteProfile(name, file_);
  const std::int32_t security = shown.Security;
  for (const ProfileField& field : kProfileFields) {
    if (!field.number()) continue;
    std::int32_t& number = shown.*field.number();
    if (number < 0 || number > field.largest) number = 0;
  }
  // It may have meant encryption.
  securityUnreadable_ = shown.Security != security;
  if (securityUnreadable_) shown.Security = kExplicitTls;
}

bool SiteProfileEditor::refuse(std::string_view key, std::string text) {
  prompts_.ShowMessage(ErrorMessage(std::move(text)));
  focus = key;
  return false;
}

bool SiteProfileEditor::passesChecks() {
  if (isBlank(shown.name)) return refuse("name", "Please enter a name for this profile");
  // Not checked for an opened profile: it may be written under any name, and the section of the old name
  // stays. One that began as a new profile may only replace itself.
  const bool asked = !opened_ && !(editMode_ && SameName(TrimmedText(shown.name), currentName_));
  if (asked && ProfileExists(shown.name, file_))
    return refuse("name", "Profile name already exists, please enter a different name");
  for (const RequiredText& required : kRequired) {
    if (isBlank(shown.*FieldOf(required.key)->text())) return refuse(required.key, required.message);
  }
  if (shown.Folders.empty()) return refuse("Folders", "Please select the folders to backup");
  const std::string why = WhyNoEncryption(shown);
  if (!why.empty()) return refuse("Security", why + ".");
  UnstorableField unstorable = FindUnstorable(shown);
  return unstorable.why.empty() || refuse(unstorable.key, std::move(unstorable.why));
}

bool SiteProfileEditor::SaveSiteProfile() {
  focus = "";
  if (!passesChecks()) return false;
  CorrectNumbers(shown);
  SiteProfile saved = shown;
  saved.name = TrimmedText(shown.name);  // a section's name has no blanks around it
  if (!quillmoor::SaveSiteProfile(saved, file_, now_())) {
    return refuse("", "The profile could not be written to " + file_ +
                          ". What you entered stays in the form and is not saved.");
  }
  saved.passwordUnreadable = securityUnreadable_ = false;
  shown = std::move(saved);
  currentName_ = shown.name;
  editMode_ = true;  // saving it again is not a new profile
  return true;
}

void SiteProfileEditor::DeleteSiteProfile() {
  focus = "";
  if (currentName_.empty()) return;
  const Message question = {"Warning", "Are you sure you want to delete this site profile: " + currentName_,
                            Message::Buttons::yesNo, Message::Icon::warning, 2};
  if (prompts_.ShowMessage(question) != UserPrompts::Answer::yes) return;
  if (!quillmoor::DeleteSiteProfile(currentName_, file_)) {
    refuse("", "The profile " + currentName_ + " could not be deleted: " + file_ + " cannot be written.");
    return;
  }
  Add();
  LoadSitesInfo();
}

void SiteProfileEditor::LoadSitesInfo() {
  profileItems.clear();
  int id = kFirstProfileItem;
  for (std::string& name : quillmoor::LoadSitesInfo(file_)) profileItems.push_back({id++, std::move(name)});
}

void SiteProfileEditor::Exit() {
  const Message question = {"Quillmoor", "Are you sure you want to exit the application?.",
                            Message::Buttons::yesNoCancel, Message::Icon::warning, 3};
  if (prompts_.ShowMessage(question) == UserPrompts::Answer::yes && onExit) onExit();
}

void SiteProfileEditor::AddFolder() {
  txtAddFolder = TrimmedText(txtAddFolder);
  if (!txtAddFolder.empty()) AddFolders({txtAddFolder});
}

std::size_t SiteProfileEditor::AddFolders(const std::vector<std::string>& folders) {
  const std::size_t before = shown.Folders.size();
  std::unordered_set<std::string> known(shown.Folders.begin(), shown.Folders.end());
  for (const std::string& folder : folders) {
    if (known.insert(folder).second) shown.Folders.push_back(folder);
  }
  return shown.Folders.size() - before;
}

void SiteProfileEditor::RemoveFolders(const std::vector<std::size_t>& rows) {
  std::vector<std::string> left;
  for (std::size_t i = 0; i < shown.Folders.size(); ++i) {
    if (std::find(rows.begin(), rows.end(), i) == rows.end()) left.push_back(std::move(shown.Folders[i]));
  }
  shown.Folders = std::move(left);
}

void SiteProfileEditor::ClearFolders() {
  shown.Folders.clear();
}

void SiteProfileEditor::ChooseSecurity(std::int32_t security) {
  quillmoor::ChooseSecurity(shown, security);
  securityUnreadable_ = false;
}

void SiteProfileEditor::NoteTlsOffered(const SiteProfile& site) {
  tlsOffered_.insert(serverOf(site));
}

void SiteProfileEditor::BrowseSaveTo() {
  if (const auto folder = prompts_.ChooseFolder(kFolderChooserTitle, shown.SaveTo)) shown.SaveTo = *folder;
}

void SiteProfileEditor::BrowseRunProgram() {
  if (const auto program = prompts_.ChooseFile(kFileChooserTitle, kFileChooserFilter, shown.RunProgram))
    shown.RunProgram = *program;
}

std::optional<SiteProfile> SiteProfileEditor::Connect() {
  focus = "";
  SiteProfile site = shown;
  site.Host = TrimmedText(shown.Host);
  site.ProxyHost = TrimmedText(shown.ProxyHost);
  const std::string why = WhyNoEncryption(site);
  if (site.Host.empty()) {
    refuse("Host", "Please enter the FTP host address or IP");
  } else if (!why.empty()) {
    refuse("Security", why + ".");
  } else {
    return site;
  }
  return std::nullopt;
}

ProxyBoxes SiteProfileEditor::proxyBoxesEnabled() const {
  return kProxyBoxes.at(static_cast<std::size_t>(shown.ProxyType));
}

std::string SiteProfileEditor::passwordNote() const {
  return shown.passwordUnreadable && shown.Password.empty()
             ? "The stored password cannot be read. Please enter it again."
             : "";
}

std::string SiteProfileEditor::securityNote() const {
  if (securityUnreadable_) return "The stored choice cannot be read. Please make it again.";
  if (shown.Security != 0 || !PassesTls(shown.ProxyType)) return FieldNote(shown, "Security");
  return tlsOffered_.count(serverOf(shown)) != 0 ? "The server offers encryption: choose TLS to use it." : "";
}

}  // namespace quillmoor
