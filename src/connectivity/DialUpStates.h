// Texts for the states of a dial-up connection.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quillmoor {

struct DialUpStateName {
  std::int32_t state;
  std::string_view text;
};

/// Deliberate: 15 and 17 have the same text.
inline constexpr std::array<DialUpStateName, 31> kDialUpStates = {{
    {0, "Opening port"},
    {1, "Port is opened"},
    {2, "Connecting..."},
    {3, "Connected"},
    {4, "All devices connected"},
    {5, "Authenticate"},
    {6, "Authentication is in progress"},
    {7, "Authentication is retrying"},
    {8, "Authenticate callback"},
    {9, "Authenticate Changed Password"},
    {10, "Authenticate project"},
    {11, "Authenticate link speed"},
    {12, "Authenticate acknowledgement"},
    {13, "Re-Authenticate"},
    {14, "Authentication complete"},
    {15, "Prepare for callback"},
    {16, "Waiting for modem reset"},
    {17, "Prepare for callback"},
    {18, "Projected"},
    {19, "Start authentication"},
    {20, "Callback complete"},
    {21, "Login to network"},
    {4096, "Interactive"},
    {4097, "Retry Authentication"},
    {4098, "Callback set by caller"},
    {8192, "Connected"},
    {8193, "Disconnected"},
    {8195, "Starting a connection"},
    {8198, "Closing..."},
    {8199, "Aborting..."},
    {20648, "Password expired"},
}};

/// States of the component itself, not of the system.
inline constexpr std::int32_t kDialUpStarting = 8195;
inline constexpr std::int32_t kDialUpClosing = 8198;
inline constexpr std::int32_t kDialUpAborting = 8199;

/// "" for any other state.
constexpr std::string_view DialUpStateText(std::int32_t state) {
  for (const DialUpStateName& known : kDialUpStates) {
    if (known.state == state) return known.text;
  }
  return "";
}

}  // namespace quillmoor
