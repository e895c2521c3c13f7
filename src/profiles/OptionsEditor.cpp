#include "profiles/OptionsEditor.h"

#include <algorithm>
#include <limits>

#include "base/LenientNumber.h"
#include "platform/system/CodePage.h"
#include "profiles/JoinedList.h"
#include "profiles/NameOrder.h"
#include "profiles/ProfileHints.h"
#include "profiles/mBase64.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

// In KB. The size of a larger segment in bytes does not fit in 32 bits, and the archive stage makes no
// archive.
constexpr std::int32_t kLargestSpan = std::numeric_limits<std::int32_t>::max() / 1024;

std::string noteOnSpan(std::int32_t span) {
  return span <= kLargestSpan
             ? ""
             : "More than " + std::to_string(kLargestSpan) + " KB is too large: no archive is made.";
}

std::string noteOnSpan(const std::string& text, std::int32_t span) {
  return Val(text) < 1 ? "Must be a number of KB, 1 or more; 1 will be used." : noteOnSpan(span);
}

std::string whatHolds(const std::string& enciphered) {
  if (enciphered.empty()) return "Archives have no password.";
  try {
    mRC4::Decipher(enciphered);
    return "The previous one is still in use.";
  } catch (const mBase64::DecodeError&) {
    return "The previous one cannot be read: no archive is made.";
  }
}

std::string noteOnRunText(std::string_view key, const std::string& text) {
  return key.starts_with("Connect") ? AddressNote(text) : "";
}

}  // namespace

OptionsEditor::OptionsEditor(ApplicationSettings& settings, UserPrompts& prompts)
    : optFull(settings.BackupMode == 1),
      chkUniqueBackup(settings.UniqueBackup == 1),
      chkUniqueBackupEnabled(optFull),
      chkCreateZip(settings.CreateZip == 1),
      archiveOptionsEnabled(chkCreateZip),
      chkSplitZip(settings.SplitZip == 1),
      txtZipSpanSize(std::to_string(settings.ZipSpanSize)),
      chkZipSelfExtract(settings.ZipSelfExtract == 1),
      lstZipCopies(SplitList(settings.ZipCopies)),
      chkNamesAsListed(settings.NamesAsListed == 1),
      spanSizeNote(noteOnSpan(settings.ZipSpanSize)),
      settings_(settings),
      prompts_(prompts),
      writer_(prompts),
      formerPassword_(settings.ZipPassword) {
  try {
    txtZipPassword = mRC4::Decipher(settings.ZipPassword);
  } catch (const mBase64::DecodeError&) {
    passwordNote = "The stored password cannot be read. Please enter it again.";
  }
  noteOnUniqueBackup();
  SortNames(lstZipCopies);
  for (std::size_t box = 0; box < kRunTexts.size(); ++box) {
    txtRun[box] = settings.*kRunTexts[box].value;
    runNote[box] = noteOnRunText(kRunTexts[box].key, txtRun[box]);
  }
}

void OptionsEditor::ChooseFull() {
  chooseMode(true);
}

void OptionsEditor::ChooseIncremental() {
  chooseMode(false);
}

void OptionsEditor::chooseMode(bool full) {
  optFull = full;
  chkUniqueBackupEnabled = full;
  noteOnUniqueBackup();
  writer_.Write("BackupMode", full ? "1" : "2");
}

/// The box keeps its value while it is disabled, and runs use it in both modes.
void OptionsEditor::noteOnUniqueBackup() {
  uniqueBackupNote =
      chkUniqueBackup && !chkUniqueBackupEnabled
          ? "Also applies to the incremental backup: it fetches everything into the new folder of each day."
          : "";
}

void OptionsEditor::SetUniqueBackup(bool checked) {
  chkUniqueBackup = checked;
  writer_.WriteFlag("UniqueBackup", checked);
}

void OptionsEditor::storeFlag(const char* key, std::int32_t ApplicationSettings::*value, bool checked) {
  settings_.*value = checked ? 1 : 0;
  writer_.WriteFlag(key, checked);
}

void OptionsEditor::SetNamesAsListed(bool checked) {
  chkNamesAsListed = checked;
  storeFlag("NamesAsListed", &ApplicationSettings::NamesAsListed, checked);
}

void OptionsEditor::SetCreateZip(bool checked) {
  chkCreateZip = checked;
  archiveOptionsEnabled = checked;
  storeFlag("CreateZip", &ApplicationSettings::CreateZip, checked);
}

void OptionsEditor::SetSplitZip(bool checked) {
  chkSplitZip = checked;
  storeFlag("SplitZip", &ApplicationSettings::SplitZip, checked);
}

void OptionsEditor::SetZipSpanSize(const std::string& text) {
  txtZipSpanSize = text;
  const double largest = std::numeric_limits<std::int32_t>::max();
  settings_.ZipSpanSize = ToLong(std::clamp(Val(text), 1.0, largest));
  spanSizeNote = noteOnSpan(text, settings_.ZipSpanSize);
  writer_.Write("ZipSpanSize", std::to_string(settings_.ZipSpanSize));
}

void OptionsEditor::SetZipSelfExtract(bool checked) {
  chkZipSelfExtract = checked;
  storeFlag("ZipSelfExtract", &ApplicationSettings::ZipSelfExtract, checked);
}

void OptionsEditor::SetZipPassword(const std::string& text) {
  txtZipPassword = text;
  // Enciphering would change the password, and nobody could open the archive with the one that was typed.
  if (!FitsAnsi(text)) {
    passwordNote = "This password contains a character that cannot be stored. " + whatHolds(formerPassword_);
    // The part typed before that character is not a password that the user has chosen.
    if (settings_.ZipPassword != formerPassword_) storePassword(formerPassword_);
    return;
  }
  passwordNote = "";
  storePassword(mRC4::Encipher(text));
}

void OptionsEditor::BeginZipPassword() {
  formerPassword_ = settings_.ZipPassword;
}

void OptionsEditor::storePassword(const std::string& enciphered) {
  settings_.ZipPassword = enciphered;
  writer_.Write("ZipPassword", enciphered);
}

void OptionsEditor::SetRunText(std::size_t box, const std::string& text) {
  txtRun.at(box) = text;
  runNote.at(box) = noteOnRunText(kRunTexts.at(box).key, text);
  settings_.*kRunTexts.at(box).value = text;
  writer_.Write(std::string(kRunTexts.at(box).key), text);
}

void OptionsEditor::BrowseRunText(std::size_t box) {
  if (const auto program = prompts_.ChooseFile(kFileChooserTitle, kFileChooserFilter, txtRun.at(box)))
    SetRunText(box, *program);
}

void OptionsEditor::AddCopy() {
  const auto folder =
      prompts_.ChooseFolder(kFolderChooserTitle, lstZipCopies.empty() ? "" : lstZipCopies.back());
  if (!folder) return;
  if (folder->find(kListSeparator) != std::string::npos) {
    prompts_.ShowMessage(
        ErrorMessage("\"" + *folder + "\" cannot be stored: \"|\" separates the folders of the list."));
    return;
  }
  if (std::find(lstZipCopies.begin(), lstZipCopies.end(), *folder) == lstZipCopies.end())
    lstZipCopies.push_back(*folder);
  storeCopies();
}

void OptionsEditor::RemoveCopy(std::optional<std::size_t> selected) {
  if (selected && *selected < lstZipCopies.size())
    lstZipCopies.erase(lstZipCopies.begin() + static_cast<std::ptrdiff_t>(*selected));
  storeCopies();
}

void OptionsEditor::storeCopies() {
  settings_.ZipCopies = JoinList(lstZipCopies);
  writer_.Write("ZipCopies", settings_.ZipCopies);
}

}  // namespace quillmoor
