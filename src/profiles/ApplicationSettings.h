// The application settings: what is kept in the settings store, read once at start-up.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quillmoor {

/// Keys of ScheduleDays; the odd spellings are those of the stored settings.
inline constexpr std::array<const char*, 8> kScheduleDayKeys = {"",
                                                                "SchedualSunday",
                                                                "SchedualMonday",
                                                                "SchedualTusday",
                                                                "SchedualWednesday",
                                                                "SchedualThrusday",
                                                                "SchedualFriday",
                                                                "SchedualSaturday"};

/// The process-wide values, named after their keys; the defaults are those of a machine that has stored
/// nothing. Passwords stay enciphered here.
struct ApplicationSettings {
  double MainLeft = 1000;  // twips, like the next three
  double MainTop = 1000;
  double MainWidth = 11685;
  double MainHeight = 8085;
  std::int32_t TransferType = 1;  // kept for stored settings; nothing reads it
  bool Passive = true;            // nothing reads it, nor RemotePort: each profile has its own
  std::int32_t Timeout = 30;      // seconds; the remote browser's
  std::int32_t RemotePort = 21;
  std::int32_t ScheduleHour = 12;
  std::int32_t ScheduleMinute = 30;
  std::array<std::int32_t, 8> ScheduleDays{};  // 1 = Sunday .. 7 = Saturday; 0 is never set
  std::int32_t ProcessPriority = 32;
  std::int32_t AutoDial = 1;
  std::int32_t AutoHangUp = 1;
  std::string AutoDialUpConnection;
  std::int32_t AutoStartUp = 1;
  std::int32_t BackupMode = 1;
  std::int32_t UniqueBackup = 0;
  std::int32_t CreateZip = 1;
  std::int32_t SplitZip = 0;
  std::int32_t ZipSpanSize = 1024;  // KB
  std::int32_t ZipSelfExtract = 0;
  std::string ZipPassword;  // enciphered
  std::string ZipCopies;    // joined with "|"
  std::string RunBefore;
  std::string RunAfter;
  std::string ConnectBefore;
  std::string ConnectAfter;
  std::int32_t FtpRetryCount = 5;
  std::int32_t ConnectionDelay = 5;  // seconds
  std::int32_t LoginAttempts = 0;    // 0: no limit, else 1..kMostLoginAttempts
  std::int32_t NamesAsListed = 0;    // 1: nothing is cut from the paths of folders (engine/mCreatePath.h)
};

inline constexpr std::int32_t kMostLoginAttempts = 99;

/// Reads every key but `AsciiExts`. A number is read from the beginning of the stored text. Where there is
/// none, or one outside the setting's range, the default is used and a sentence with the key, the stored text
/// and the default is added to `notes`, if given. Raises RegistryStoreError when the store itself cannot be
/// read (damaged file; the message names it).
ApplicationSettings LoadApplicationSettings(std::vector<std::string>* notes = nullptr);

/// The `AsciiExts` value, the default list when it is missing; joined with "|".
std::string LoadAsciiExtensions();

/// The list stored by "restore default", and the default of LoadAsciiExtensions.
extern const char* const kDefaultAsciiExtensions;

}  // namespace quillmoor
