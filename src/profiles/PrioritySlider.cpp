#include "profiles/PrioritySlider.h"

#include "connectivity/modProcessPriority.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {

std::string PrioritySliderMoved(std::int32_t position, ApplicationSettings& settings) {
  const std::int32_t chosen = modProcessPriority::PositionToClass(position);
  settings.ProcessPriority = chosen;
  modProcessPriority::SetPriority(0, 0, chosen);
  WriteSetting("ProcessPriority", std::to_string(chosen));
  return modProcessPriority::ClassName(chosen);
}

}  // namespace quillmoor
