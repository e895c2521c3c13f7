// The remote-access functions of Windows, loaded at run time.
#pragma once

#include "platform/system/windows/WindowsApi.h"
// Needs the header above.
#include <ras.h>

namespace quillmoor {

struct RasLibrary {
  decltype(&::RasEnumEntriesW) enumEntries = nullptr;
  decltype(&::RasGetEntryDialParamsW) getEntryDialParams = nullptr;
  decltype(&::RasDialW) dial = nullptr;
  decltype(&::RasEnumConnectionsA) enumConnections = nullptr;
  decltype(&::RasGetConnectStatusA) getConnectStatus = nullptr;
  decltype(&::RasHangUpA) hangUp = nullptr;

  /// A library that lacks a function is not used.
  bool complete() const {
    return enumEntries && getEntryDialParams && dial && enumConnections && getConnectStatus && hangUp;
  }
};

/// From rasapi32.dll, which stays loaded. Incomplete on a machine without it.
const RasLibrary& SystemRasLibrary();

}  // namespace quillmoor
