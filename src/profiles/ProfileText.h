// The texts of a site profile, and which texts the profile file can keep.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "profiles/SiteProfile.h"

namespace quillmoor {

/// A field that is given as text, by its key.
struct ProfileText {
  std::string_view key;
  std::string SiteProfile::*field;
};
inline constexpr std::array<ProfileText, 16> kProfileTexts = {{{"Host", &SiteProfile::Host},
                                                               {"UserID", &SiteProfile::UserID},
                                                               {"Password", &SiteProfile::Password},
                                                               {"Port", &SiteProfile::Port},
                                                               {"Account", &SiteProfile::Account},
                                                               {"SaveTo", &SiteProfile::SaveTo},
                                                               {"RunURL", &SiteProfile::RunURL},
                                                               {"RunProgram", &SiteProfile::RunProgram},
                                                               {"Timeout", &SiteProfile::Timeout},
                                                               {"MinData", &SiteProfile::MinData},
                                                               {"MaxData", &SiteProfile::MaxData},
                                                               {"ProxyHost", &SiteProfile::ProxyHost},
                                                               {"ProxyPort", &SiteProfile::ProxyPort},
                                                               {"ProxyUsername", &SiteProfile::ProxyUsername},
                                                               {"ProxyPassword", &SiteProfile::ProxyPassword},
                                                               {"DefaultDir", &SiteProfile::DefaultDir}}};

/// Whether the value of this key is not to be shown: that of a profile's field or a setting.
bool IsSecret(std::string_view key);

/// Why the profile file cannot keep this text, "" when it can. The file is ANSI text of one line a value, of
/// limited length: what it cannot hold would come back as something else. `what` begins the sentence.
std::string WhyNotStorable(const std::string& what, const std::string& text);

/// The same for one remote folder: the separator of the stored list would make two of it.
std::string WhyNoFolder(const std::string& what, const std::string& folder);

/// The same for the whole of a profile, naming the key of the first field that cannot be kept ("name" and
/// "Folders" among them).
struct UnstorableField {
  std::string_view key;
  std::string why;
};
UnstorableField FindUnstorable(const SiteProfile& profile);

}  // namespace quillmoor
