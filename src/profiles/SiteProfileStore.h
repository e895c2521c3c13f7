// The profile file: one section for each site profile.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system/LocalTime.h"
#include "profiles/SiteProfile.h"

namespace quillmoor {

/// "Profiles.ini" in the program's folder.
std::string ProfilesFilePath();

/// Names of the profiles, sorted without regard to case.
std::vector<std::string> LoadSitesInfo(const std::string& file);

/// The text without the blanks and tabs around it.
std::string TrimmedText(const std::string& text);

/// True for 1 to 65535.
bool IsPort(double number);

bool ProfileExists(const std::string& name, const std::string& file);

/// The text to store for a field; std::nullopt when its key is not written.
std::optional<std::string> StoredText(const SiteProfile& profile, const ProfileField& field);
/// Sets the field from its stored text; "" for a missing key.
void TakeStored(SiteProfile& profile, const ProfileField& field, const std::string& stored);

/// Reads the section of exactly that name. A number beyond 32 bits is 0. Raises nothing: damaged values are
/// noted in the profile.
SiteProfile LoadProfileForRun(const std::string& section, const std::string& file);

/// The profile of that name, without regard to case; the defaults for "". A number beyond 16 bits is 0, or -1
/// for Security.
SiteProfile LoadSiteProfile(const std::string& name, const std::string& file);

/// Replaces the section of the profile's name, and sets an ID if it has none. False when the file could not
/// be written.
bool SaveSiteProfile(SiteProfile& profile, const std::string& file, LocalDateTime now = LocalNow());

/// Sets Security, and the port with it where that still is the usual one of the former kind of encryption.
void ChooseSecurity(SiteProfile& profile, std::int32_t security);

/// Corrects the numbers: a Port outside 1..65535 becomes the usual one, a Timeout outside 1..9999 "60"; with
/// ManualPort a MinData outside 1..65535 becomes "1", and a MaxData below it or above 65535 becomes MinData.
void CorrectNumbers(SiteProfile& profile);

bool DeleteSiteProfile(const std::string& name, const std::string& file);

/// Remote folders in one value, joined with "~|~".
std::string JoinFolders(const std::vector<std::string>& folders);
/// "" has none; duplicates are dropped.
std::vector<std::string> SplitFolders(std::string_view stored);

}  // namespace quillmoor
