// What the fields of a site profile want: told before anything is wrong, and beside a text that will not do.
#pragma once

#include <string>
#include <string_view>

#include "platform/files/LocalPath.h"
#include "profiles/SiteProfile.h"

namespace quillmoor {

/// What belongs into the field of this key ("name", "Folders" or a key of the profile file), as a sentence or
/// two; "" where the caption says it all.
std::string_view FieldHint(std::string_view key);

/// What is wrong with what the field holds, as a sentence or two, "" when nothing is. It forbids nothing: a
/// save refuses and corrects by rules of its own. A field that is empty, or that nothing looks at, is passed
/// over; but not the host and the port of a proxy that is to be used. `namesAsListed`: the setting
/// NamesAsListed is 1.
std::string FieldNote(const SiteProfile& profile, std::string_view key, bool namesAsListed = false,
                      LocalNameRules rules = kLocalNameRules);

/// The same for a web address that is to be called; blanks around it count here.
std::string AddressNote(const std::string& address);

}  // namespace quillmoor
