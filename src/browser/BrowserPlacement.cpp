#include "browser/BrowserPlacement.h"

#include <cmath>
#include <exception>
#include <string>

#include "base/ErrorGuard.h"
#include "base/LenientNumber.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

constexpr const char* kLeft = "FtpBrowseLeft";
constexpr const char* kTop = "FtpBrowseTop";
constexpr const char* kWidth = "FtpBrowseWidth";
constexpr const char* kHeight = "FtpBrowseHeight";
constexpr const char* kFoldersOnly = "FtpBrowseFoldersOnly";

constexpr double kFarthest = 1'000'000;  // beyond any desktop

std::optional<double> storedNumber(const char* key) {
  const std::string text = ReadSetting(key, "");
  const double number = Val(text);
  if (text.empty() || std::abs(number) > kFarthest) return std::nullopt;
  return number;
}

}  // namespace

BrowserPlacement LoadBrowserPlacement() {
  BrowserPlacement placement;
  Guarded([&] {
    const auto left = storedNumber(kLeft), top = storedNumber(kTop), width = storedNumber(kWidth),
               height = storedNumber(kHeight);
    if (left && top && width && height && *width > 0 && *height > 0)
      placement.window = {*left, *top, *width, *height};
    placement.foldersOnly = Val(ReadSetting(kFoldersOnly, "0")) == 1;
  });
  return placement;
}

void SaveBrowserPlacement(const BrowserPlacement& placement) {
  Guarded([&] {
    WriteSetting(kFoldersOnly, placement.foldersOnly ? "1" : "0");
    if (!placement.window) return;
    const auto write = [](const char* key, double number) {
      WriteSetting(key, std::to_string(std::lround(number)));
    };
    write(kLeft, placement.window->left);
    write(kTop, placement.window->top);
    write(kWidth, placement.window->width);
    write(kHeight, placement.window->height);
  });
}

}  // namespace quillmoor
