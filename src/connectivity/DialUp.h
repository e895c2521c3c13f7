// The dial-up component: phonebook entries of the system, and one connection made from them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quillmoor {

inline constexpr std::int32_t kDialUpConnected = 8192;
inline constexpr std::int32_t kDialUpDisconnected = 8193;

/// One connection at a time; all on the thread that made the component.
class DialUp {
 public:
  virtual ~DialUp() = default;

  /// A dial or a hang-up is in progress.
  virtual bool Busy() const = 0;
  /// State number of the connection, kDialUpConnected when it is up.
  virtual std::int32_t State() const = 0;
  /// Names of the entries that can be dialled.
  virtual std::vector<std::string> Entries() const = 0;
  /// Starts dialling the entry and returns at once; progress shows in State.
  virtual void Dial(const std::string& entry) = 0;
  /// Ends the connection, if any, and makes the component ready to dial; in any state.
  virtual void HangUp() = 0;
  /// Cancels a dial in progress.
  virtual void Abort() = 0;

  /// Called at every change of State.
  std::function<void(std::int32_t state)> onStateChange;

  /// Is the first dial-up connection of the whole system up, whoever made it?
  virtual bool IsDialUpConnected() const = 0;
  /// Ends the first dial-up connection of the system if it is up. True when the attempt reported an error;
  /// callers ignore it.
  virtual bool HangUpDialUp() = 0;
};

/// Dial-up on a machine that has none: no entries, never connected, and dialling leads nowhere.
class NoDialUp final : public DialUp {
 public:
  bool Busy() const override { return false; }
  std::int32_t State() const override { return kDialUpDisconnected; }
  std::vector<std::string> Entries() const override { return {}; }
  void Dial(const std::string&) override {}
  void HangUp() override {}
  void Abort() override {}
  bool IsDialUpConnected() const override { return false; }
  bool HangUpDialUp() override { return false; }
};

}  // namespace quillmoor
