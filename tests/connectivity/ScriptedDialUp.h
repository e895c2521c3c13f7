// A dial-up component whose state a test sets, and which records its calls.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "connectivity/DialUp.h"

namespace quillmoor::testing {

struct ScriptedDialUp final : DialUp {
  bool busy = false, systemUp = false, dialThrows = false;
  std::int32_t state = kDialUpDisconnected;
  std::vector<std::string> entries, calls;
  int busyAsked = 0, systemAsked = 0;
  std::function<void()> onDial;

  bool Busy() override { return ++busyAsked, busy; }
  std::int32_t State() override { return state; }
  std::vector<std::string> Entries() override { return entries; }
  void Dial(const std::string& entry) override {
    calls.push_back("dial " + entry);
    if (dialThrows) throw std::runtime_error("no such entry");
    if (onDial) onDial();
  }
  void HangUp() override { calls.push_back("hang up"); }
  void Abort() override { calls.push_back("abort"); }
  bool IsDialUpConnected() override { return ++systemAsked, systemUp; }
  bool HangUpDialUp() override {
    calls.push_back("hang up system");
    return false;
  }
};

}  // namespace quillmoor::testing
