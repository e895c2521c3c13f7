#include "profiles/SettingWriter.h"

#include <utility>

#include "platform/RegistryApi.h"
#include "profiles/RegistryError.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {

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
    failure = error.place() + (error.reason().empty() ? "" : "\n" + error.reason());
  } catch (const RegistryStoreError& error) {
    failure = key + "\n" + error.what();
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
