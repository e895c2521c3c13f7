// Texts about a run for the desktop: the tray icon's tip during the run, a notification at its end.
#pragma once

#include <string>
#include <vector>

#include "engine/RunController.h"

class wxWindow;

namespace quillmoor {

/// "Quillmoor - My site: 45%", with the name cut so that the percentage fits.
std::string RunTip(const std::string& title, const std::string& profile, int percent);

/// "2 profiles completed, 1 not. 1204 files.", followed by a line for each of the first profiles that failed.
std::string RunNotice(const std::vector<ProfileResult>& results, bool stopped, double files);

/// Shows a desktop notification, or nothing on desktops without them.
void Notify(wxWindow* parent, const std::string& title, const std::string& text);

}  // namespace quillmoor
