#include "profiles/SettingWriter.h"

#include <utility>

#include "platform/registry/RegistryApi.h"
#include "profiles/RegistryError.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {

std::string StorageFailure(const std::exception& error) {
  const auto* const known = dynamic_cast<const RegistryError*>(&error);
  if (!known) return error.what();
  return known->place() + (known->reason().empty() ? "" : "\n" + known->reason());
}

void SettingWriter::Write(const std::string& key, const std::string& text) {
  Attempt(key, [&] { WriteSetting(key, text); });
}

void SettingWriter::Attempt(const std::string& key, const std::function<void()>& store) {
  std::string failure;
  try {
    store();
    told_.erase(key);
    return;
  } catch (const RegistryError& error) {
    failure = StorageFailure(error);
  } catch (const RegistryStoreError& error) {
    failure = key + "\n" + StorageFailure(error);
  }
  if (telling_ == Telling::never) return;
  if (told_.insert(key).second) failures_.push_back(std::move(failure));
  if (telling_ == Telling::atOnce) tell();
}

void SettingWriter::Together(const std::function<void()>& changes) {
  run(changes, Telling::together);
  tell();
}

void SettingWriter::Quietly(const std::function<void()>& changes) {
  run(changes, Telling::never);
}

void SettingWriter::run(const std::function<void()>& changes, Telling telling) {
  struct Restore {
    Telling& telling;
    ~Restore() { telling = Telling::atOnce; }
  } const restore{telling_};
  telling_ = telling;
  changes();
}

void SettingWriter::tell() {
  if (failures_.empty()) return;
  std::string text = "This could not be stored:\n\n";
  for (const std::string& failure : std::exchange(failures_, {})) text += failure + "\n\n";
  prompts_.ShowMessage(ErrorMessage(
      text + "What you entered stays in the window, but it is forgotten when the program ends."));
}

}  // namespace quillmoor
