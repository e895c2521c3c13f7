// Names without regard to case: how lists of them are sorted and compared.
#pragma once

#include <string>
#include <vector>

namespace quillmoor {

/// Ascending without regard to case; names equal but for case keep their order. "10" comes before "2".
void SortNames(std::vector<std::string>& names);

/// Equal but for case.
bool SameName(const std::string& a, const std::string& b);

}  // namespace quillmoor
