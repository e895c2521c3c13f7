// What the backup options form shows and does, without the form.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "profiles/ApplicationSettings.h"
#include "profiles/SettingWriter.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

/// The programs and addresses around a run: key and value in use of the four boxes.
struct RunText {
  std::string_view key;
  std::string ApplicationSettings::*value;
};
inline constexpr std::array<RunText, 4> kRunTexts = {{{"RunBefore", &ApplicationSettings::RunBefore},
                                                      {"RunAfter", &ApplicationSettings::RunAfter},
                                                      {"ConnectBefore", &ApplicationSettings::ConnectBefore},
                                                      {"ConnectAfter", &ApplicationSettings::ConnectAfter}}};

/// The form fills its controls from the public fields when it is loaded, calls a member with the new value
/// for each control that changes, and then shows what the fields say. Every value is stored at once. A value
/// that cannot be stored is reported once and is used all the same.
class OptionsEditor {
 public:
  /// Both must outlive this. Runs use `settings`.
  OptionsEditor(ApplicationSettings& settings, UserPrompts& prompts);

  bool optFull = true;  // else the incremental option is the selected one
  bool chkUniqueBackup = false;
  bool chkUniqueBackupEnabled = true;
  bool chkCreateZip = true;
  /// The boxes for splitting, span size, self-extraction and password, with their labels.
  bool archiveOptionsEnabled = true;
  bool chkSplitZip = false;
  std::string txtZipSpanSize;
  bool chkZipSelfExtract = false;
  std::string txtZipPassword;
  std::vector<std::string> lstZipCopies;
  std::array<std::string, kRunTexts.size()> txtRun;  // as in kRunTexts
  bool chkNamesAsListed = false;

  /// Notes beside unique backup, the span size, the password and the addresses; "" when there is none.
  std::string uniqueBackupNote;
  std::string spanSizeNote;
  std::string passwordNote;
  std::array<std::string, kRunTexts.size()> runNote;

  // Mode and unique backup are only stored; runs deliberately use what was read at start-up.
  void ChooseFull();
  void ChooseIncremental();
  void SetUniqueBackup(bool checked);

  void SetNamesAsListed(bool checked);

  void SetCreateZip(bool checked);
  void SetSplitZip(bool checked);
  /// In KB. The box keeps the text as typed, whatever number is stored.
  void SetZipSpanSize(const std::string& text);
  void SetZipSelfExtract(bool checked);
  /// The box gets the focus: the current password is restored if the new one cannot be stored.
  void BeginZipPassword();
  /// A password that cannot be enciphered is not stored, nor is the part of it typed before; the note says
  /// so.
  void SetZipPassword(const std::string& text);

  /// `box` is a position in kRunTexts.
  void SetRunText(std::size_t box, const std::string& text);
  /// The browse buttons of the boxes RunBefore and RunAfter.
  void BrowseRunText(std::size_t box);

  void AddCopy();
  void RemoveCopy(std::optional<std::size_t> selected);

 private:
  void chooseMode(bool full);
  void noteOnUniqueBackup();
  void storeFlag(const char* key, std::int32_t ApplicationSettings::*value, bool checked);
  void storeCopies();
  void storePassword(const std::string& enciphered);

  ApplicationSettings& settings_;
  UserPrompts& prompts_;
  SettingWriter writer_;
  std::string formerPassword_;  // enciphered
};

}  // namespace quillmoor
