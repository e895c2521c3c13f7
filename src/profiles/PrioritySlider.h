// What the priority slider of the settings form does, without the form.
#pragma once

#include <cstdint>
#include <string>

#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// Handles a move of SliderlPriority to 1..6: applies the priority class to this process and stores it, even
/// if the system refuses it. Returns the text of lblPriority. When the form is loaded, modProcessPriority's
/// ClassToPosition and ClassName set slider and label.
std::string PrioritySliderMoved(std::int32_t position, ApplicationSettings& settings);

}  // namespace quillmoor
