#include "profiles/DialUpPanel.h"

#include <exception>

#include "connectivity/DialUpStates.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

constexpr const char* kEntryKey = "AutoDialUpConnection";

void storeFlag(const char* key, bool checked, std::int32_t& value) {
  value = checked ? 1 : 0;
  WriteSetting(key, std::to_string(value));
}

}  // namespace

DialUpPanel::DialUpPanel(DialUp& dialUp, ApplicationSettings& settings)
    : dialUp_(dialUp), settings_(settings) {
  dialUp_.onStateChange = [this](std::int32_t state) { lblRasStatus = DialUpStateText(state); };
}

DialUpPanel::~DialUpPanel() {
  dialUp_.onStateChange = nullptr;
}

DialUpPanel::EntryList DialUpPanel::LoadEntries() {
  settings_.AutoDialUpConnection = ReadSetting(kEntryKey, "");
  EntryList list{dialUp_.Entries(), std::nullopt};
  for (std::size_t i = 0; i < list.names.size(); ++i) {
    if (list.names[i] == settings_.AutoDialUpConnection) list.selected = i;
  }
  return list;
}

void DialUpPanel::ChooseEntry(const std::string& text) {
  if (text.empty()) return;
  settings_.AutoDialUpConnection = text;
  WriteSetting(kEntryKey, text);
}

void DialUpPanel::Dial() {
  if (settings_.AutoDialUpConnection.empty()) return;
  try {
    dialUp_.Dial(settings_.AutoDialUpConnection);
    showButtons(false, true);
  } catch (const std::exception&) {
    // No message: the buttons stay as they are.
  }
}

void DialUpPanel::HangUp() {
  if (dialUp_.Busy()) {
    dialUp_.Abort();
  } else if (dialUp_.State() == kDialUpConnected) {
    dialUp_.HangUp();
  }
}

void DialUpPanel::RefreshStatus() {
  if (dialUp_.Busy()) {
    showButtons(false, true);
  } else if (dialUp_.State() == kDialUpConnected || dialUp_.IsDialUpConnected()) {
    lblRasStatus = "Connected";
    showButtons(false, true);
  } else if (dialUp_.State() == kDialUpDisconnected || !dialUp_.IsDialUpConnected()) {
    lblRasStatus = "Not Connected";
    showButtons(true, false);
  }
  // The answer is deliberately not used: asking makes the system refresh it.
  dialUp_.IsDialUpConnected();
}

void DialUpPanel::SetAutoDial(bool checked) {
  storeFlag("AutoDial", checked, settings_.AutoDial);
}

void DialUpPanel::SetAutoHangUp(bool checked) {
  storeFlag("AutoHangUp", checked, settings_.AutoHangUp);
}

void DialUpPanel::showButtons(bool dial, bool hangUp) {
  cmdDialEnabled = dial;
  cmdHangUpEnabled = hangUp;
}

}  // namespace quillmoor
