// The dial-up component: the system's phonebook entries, and one connection dialled from them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Pump.h"
#include "platform/network/RemoteAccess.h"

namespace quillmoor {

/// One connection at a time; all calls on the thread that created the component. Busy and State process what
/// the system has reported on other threads: call one of them regularly while an operation is in progress.
class DialUp {
 public:
  virtual ~DialUp() = default;

  /// Whether a dial or a hang-up is in progress.
  virtual bool Busy() = 0;
  /// State number of the connection, kDialUpConnected when it is up; DialUpStates.h has their texts.
  virtual std::int32_t State() = 0;
  /// Names of the entries that can be dialled.
  virtual std::vector<std::string> Entries() = 0;
  /// Starts dialling the entry and returns at once; State shows the progress. If the same entry is being
  /// dialled, that dial continues, so that repeated calls do not interrupt a slow dial. Raises
  /// std::runtime_error when the dial cannot be started.
  virtual void Dial(const std::string& entry) = 0;
  /// Ends the connection, if there is one. Does not end a dial in progress; see Abort.
  virtual void HangUp() = 0;
  /// Cancels a dial in progress.
  virtual void Abort() = 0;

  /// Called at every change of State, from inside one of the calls above.
  std::function<void(std::int32_t state)> onStateChange;

  /// Whether the system's first dial-up connection is up, whichever program made it.
  virtual bool IsDialUpConnected() = 0;
  /// Ends the system's first dial-up connection if it is up. True when the attempt reported an error; callers
  /// ignore it.
  virtual bool HangUpDialUp() = 0;
};

/// This machine's component. `pump` is called by operations that take long. Without a pump no operation
/// waits, and Entries may be complete only at a later call.
std::unique_ptr<DialUp> MakeDialUp(Pump pump);

}  // namespace quillmoor
