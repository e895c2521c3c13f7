// Hints on the fields of a site profile, and notes on values that are not valid.
#pragma once

#include <string>
#include <string_view>

#include "platform/files/LocalPath.h"
#include "profiles/SiteProfile.h"

namespace quillmoor {

/// What belongs in the field of this key ("name", "Folders" or a key of kProfileFields), as a sentence or
/// two; "" where the caption says enough.
std::string_view FieldHint(std::string_view key);

/// Why no login with the profile can be encrypted as its Security says: a sentence without its full stop, ""
/// when it can.
std::string WhyNoEncryption(const SiteProfile& profile);

/// What is wrong with the value of the field, as a sentence or two; "" when nothing is. This is only a note:
/// a save refuses and corrects by its own rules. Empty and unused fields have no note, except the host and
/// the port of a proxy that is in use. `namesAsListed`: the setting NamesAsListed is 1.
std::string FieldNote(const SiteProfile& profile, std::string_view key, bool namesAsListed = false,
                      LocalNameRules rules = kLocalNameRules);

/// The same for a web address; blanks around it are an error here.
std::string AddressNote(const std::string& address);

}  // namespace quillmoor
