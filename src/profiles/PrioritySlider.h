// What the priority slider of the settings form does, without the form.
#pragma once

#include <cstdint>
#include <string>

#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// SliderlPriority, of 1 to 6, has been moved there: this process takes the class, and it is stored. Returns
/// what lblPriority shows. A class that the system refuses is stored all the same: it is what the user chose.
/// When the form is loaded slider and label come from modProcessPriority's ClassToPosition and ClassName.
std::string PrioritySliderMoved(std::int32_t position, ApplicationSettings& settings);

}  // namespace quillmoor
