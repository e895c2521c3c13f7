// The dial-up component: phonebook entries of the system, and one connection made from them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Pump.h"
#include "platform/network/RemoteAccess.h"

namespace quillmoor {

/// One connection at a time; all on the thread that made the component. What the system reports, on whatever
/// thread, is taken in by Busy and State: call one of them now and then while something is in progress.
class DialUp {
 public:
  virtual ~DialUp() = default;

  /// A dial or a hang-up is in progress.
  virtual bool Busy() = 0;
  /// State number of the connection, kDialUpConnected when it is up; DialUpStates.h has their texts.
  virtual std::int32_t State() = 0;
  /// Names of the entries that can be dialled.
  virtual std::vector<std::string> Entries() = 0;
  /// Starts dialling the entry and returns at once; progress shows in State. A dial of the same entry that is
  /// in progress goes on instead, so that one who asks every few seconds gets a connection that takes longer.
  /// Raises std::runtime_error when the dial cannot be started.
  virtual void Dial(const std::string& entry) = 0;
  /// Ends the connection, if there is one. A dial in progress is none yet: that is for Abort.
  virtual void HangUp() = 0;
  /// Cancels a dial in progress.
  virtual void Abort() = 0;

  /// Called at every change of State, from inside one of the calls above.
  std::function<void(std::int32_t state)> onStateChange;

  /// Is the first dial-up connection of the whole system up, whoever made it?
  virtual bool IsDialUpConnected() = 0;
  /// Ends the first dial-up connection of the system if it is up. True when the attempt reported an error;
  /// callers ignore it.
  virtual bool HangUpDialUp() = 0;
};

/// This machine's component. `pump` is called by whatever takes longer than a moment; without one nothing
/// does, and Entries may name those that are there only when it is asked again.
std::unique_ptr<DialUp> MakeDialUp(Pump pump);

}  // namespace quillmoor
