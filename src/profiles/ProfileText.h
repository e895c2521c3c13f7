// Which texts the profile file can hold, and which are secret.
#pragma once

#include <string>
#include <string_view>

#include "profiles/SiteProfile.h"

namespace quillmoor {

/// True when the value of this key, of a profile or a setting, must not be shown.
bool IsSecret(std::string_view key);

/// Why the profile file cannot hold this text, "" when it can. Each value is one line of ANSI text of limited
/// length; any other text would be read back changed. `what` begins the sentence.
std::string WhyNotStorable(const std::string& what, const std::string& text);

/// The same for one remote folder, which must not contain the separator of the stored list.
std::string WhyNoFolder(const std::string& what, const std::string& folder);

/// The same for a whole profile, with the key of the first field that cannot be stored ("name" and "Folders"
/// included). A fingerprint that is none is not stored either.
struct UnstorableField {
  std::string_view key;
  std::string why;
};
UnstorableField FindUnstorable(const SiteProfile& profile);

}  // namespace quillmoor
