// What the desktop is told of a run: in the tray's tip while it goes on, in a notification at its end.
#pragma once

#include <string>
#include <vector>

#include "engine/RunController.h"

class wxWindow;

namespace quillmoor {

/// "Quillmoor - My site: 45%", the name cut so that the percentage stays within the tip.
std::string RunTip(const std::string& title, const std::string& profile, int percent);

/// "2 profiles completed, 1 not. 1204 files.", then a line for each of the first profiles that failed.
std::string RunNotice(const std::vector<ProfileResult>& results, bool stopped, double files);

/// Shows a notification by the desktop's own means. Where it has none nothing is shown.
void Notify(wxWindow* parent, const std::string& title, const std::string& text);

}  // namespace quillmoor
