#include "profiles/mAutoRun.h"

#include "platform/registry/RegistryApi.h"
#include "platform/system/ProgramFolder.h"
#include "profiles/cRegistry.h"

namespace quillmoor::mAutoRun {
namespace {

constexpr const char* kRun = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const char* kRunOnce = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";

cRegistry entryIn(const char* section) {
  cRegistry registry;
  registry.ClassKey = HKEY_LOCAL_MACHINE_VALUE;
  registry.SectionKey = section;
  registry.ValueKey = ProgramName();
  return registry;
}

void remove(const char* section) {
  try {
    entryIn(section).DeleteValue();  // always: the desktop's entry may exist without the key
  } catch (const RegistryError& error) {
    if (!error.reason().empty()) throw;  // without a reason the key is missing: nothing to delete
  }
}

void write(const char* section) {
  entryIn(section).SetValue(ProgramFolder() + ProgramName());
}

}  // namespace

void SetAutoRun(Mode mode) {
  if (mode != Mode::always) remove(kRun);
  if (mode != Mode::once) remove(kRunOnce);
  if (mode == Mode::always) write(kRun);
  if (mode == Mode::once) write(kRunOnce);
}

}  // namespace quillmoor::mAutoRun
