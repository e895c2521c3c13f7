// The profile file: one section for each site profile.
#pragma once

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

/// Without the blanks around it, which are no part of a section's name, nor of a host's.
std::string TrimmedText(const std::string& text);

/// A port's number: 1 to 65535.
bool IsPort(double number);

bool ProfileExists(const std::string& name, const std::string& file);

/// The profile of that name; the defaults for "". A key that is missing reads as "" or 0.
SiteProfile LoadSiteProfile(const std::string& name, const std::string& file);

/// Writes the profile in place of the section of its name, and gives it an ID if it has none. False when the
/// file could not be written.
bool SaveSiteProfile(SiteProfile& profile, const std::string& file, LocalDateTime now = LocalNow());

/// Puts right what only looks like a number: a Port outside 1..65535 becomes "21", a Timeout outside 1..9999
/// "60"; with ManualPort a MinData outside 1..65535 becomes "1", and a MaxData below it or above 65535
/// becomes MinData.
void CorrectNumbers(SiteProfile& profile);

bool DeleteSiteProfile(const std::string& name, const std::string& file);

/// Remote folders in one value, joined with "~|~".
std::string JoinFolders(const std::vector<std::string>& folders);
/// "" has none; one that occurs twice is taken once.
std::vector<std::string> SplitFolders(std::string_view stored);

}  // namespace quillmoor
