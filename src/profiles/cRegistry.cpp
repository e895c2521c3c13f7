#include "profiles/cRegistry.h"

#include <array>

#include "platform/registry/RegistryApi.h"
#include "platform/system/ProgramFolder.h"

namespace quillmoor {
namespace {

/// A "%" and, at least one character further on, a second one.
bool holdsEnvironmentReference(const std::string& text) {
  const auto first = text.find('%');
  return first != std::string::npos && text.find('%', first + 2) != std::string::npos;
}

std::string shown(const RegistryValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<std::int16_t>(&value)) return std::to_string(*number);
  if (const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&value)) {
    return std::to_string(bytes->size()) + " bytes";
  }
  return "";
}

std::string littleEndian(std::int32_t number) {
  const auto bits = static_cast<std::uint32_t>(number);
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((bits >> shift) & 0xFF);
  return bytes;
}

std::int32_t fromLittleEndian(const std::string& bytes) {
  std::uint32_t bits = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) bits = (bits << 8) | static_cast<unsigned char>(bytes[i]);
  return static_cast<std::int32_t>(bits);
}

struct Verb {
  const char *key, *caption, *commandSwitch;
};
constexpr std::array<Verb, 4> kVerbs = {{{"\\shell\\open", "&Open", ""},
                                         {"\\shell\\print", "&Print", " /p"},
                                         {"\\shell\\add", "&Install ", " /a"},
                                         {"\\shell\\new", "&New", " /n"}}};
constexpr const char* kClasses = "SOFTWARE\\Classes\\";

}  // namespace

void cRegistry::raise(const std::string& description, const char* reason) const {
  std::string where = RegistryRootName(ClassKey) + "\\" + SectionKey;
  if (!ValueKey.empty()) where += "\\" + ValueKey;
  throw RegistryError(ProgramName() + ".cRegistry", description, where, reason ? reason : "");
}

std::string cRegistry::place() const {
  return RegistryRootName(ClassKey) + "',Section: '" + SectionKey;
}

RegistryValue cRegistry::Value() const {
  const auto data = RegistryApi::queryValue(ClassKey, SectionKey, ValueKey);
  if (!data) return Default;
  switch (data->type) {
    case RegistryType::text:
      return data->bytes;
    case RegistryType::expandText:
      return RegistryApi::expandEnvironment(data->bytes);
    case RegistryType::dword:
      if (data->bytes.size() == 4) return fromLittleEndian(data->bytes);
      break;
    default:
      break;
  }
  return std::vector<std::uint8_t>(data->bytes.begin(), data->bytes.end());
}

void cRegistry::SetValue(const RegistryValue& value) {
  const std::string failed = "Failed to set registry value Key: '" + place() + "',Key: '" + ValueKey +
                             "' to value: '" + shown(value) + "'";
  RegistryData data{static_cast<RegistryType>(ValueType), ""};
  switch (data.type) {
    case RegistryType::text:
    case RegistryType::expandText: {
      if (std::holds_alternative<std::vector<std::uint8_t>>(value))
        raise(failed, "type mismatch: text is expected");
      const std::string text = shown(value);  // a number is stored as its decimal text
      // Stored texts end with a zero: the rest is cut off.
      data.bytes = text.substr(0, text.find('\0'));
      data.type = holdsEnvironmentReference(data.bytes) ? RegistryType::expandText : RegistryType::text;
      break;
    }
    case RegistryType::binary: {
      const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&value);
      if (!bytes) raise(failed, "type mismatch: bytes are expected");
      data.bytes.assign(bytes->begin(), bytes->end());
      break;
    }
    case RegistryType::dword: {
      if (const auto* number = std::get_if<std::int32_t>(&value)) {
        data.bytes = littleEndian(*number);
      } else if (const auto* small = std::get_if<std::int16_t>(&value)) {
        data.bytes = littleEndian(*small);
      } else {
        raise(failed, "type mismatch: a number of 16 or 32 bits is expected");
      }
      break;
    }
    default:
      raise(failed, "type mismatch: values of this type cannot be written");
  }
  try {
    RegistryApi::setValue(ClassKey, SectionKey, ValueKey, data);
  } catch (const std::exception& error) {
    raise(failed, error.what());
  }
}

bool cRegistry::KeyExists() const {
  return RegistryApi::keyExists(ClassKey, SectionKey);
}

void cRegistry::CreateKey() {
  try {
    RegistryApi::createKey(ClassKey, SectionKey);
  } catch (const std::exception& error) {
    raise("Failed to create registry Key: '" + place() + "'", error.what());
  }
}

void cRegistry::DeleteKey() {
  const std::string failed = "Failed to delete registry Key: '" + place() + "'";
  try {
    if (RegistryApi::deleteKey(ClassKey, SectionKey)) return;
  } catch (const std::exception& error) {
    raise(failed, error.what());
  }
  raise(failed);
}

void cRegistry::DeleteValue() {
  const std::string failed = "Failed to open key '" + place() + "',Key: '" + ValueKey + "' for delete access";
  try {
    if (RegistryApi::deleteValue(ClassKey, SectionKey, ValueKey)) return;
  } catch (const std::exception& error) {
    raise(failed, error.what());
  }
  raise(failed);
}

std::vector<std::string> cRegistry::EnumerateValues() const {
  return RegistryApi::enumerateValues(ClassKey, SectionKey);
}

std::vector<std::string> cRegistry::EnumerateSections() const {
  return RegistryApi::enumerateKeys(ClassKey, SectionKey);
}

void cRegistry::CreateEXEAssociation(const std::string& programPath, const std::string& className,
                                     int iconIndex) {
  cRegistry key;
  key.ClassKey = ClassKey;
  const auto write = [&](const std::string& section, const std::string& text) {
    key.SectionKey = kClasses + className + section;
    key.SetValue(text);
  };
  for (const Verb& verb : kVerbs) {
    write(verb.key, verb.caption);
    write(std::string(verb.key) + "\\command", programPath + verb.commandSwitch + " \"%1\"");
  }
  write("\\DefaultIcon", programPath + "," + std::to_string(iconIndex));
  className_ = className;
}

void cRegistry::CreateAdditionalEXEAssociations(const std::vector<std::string>& namesTextsCommands) {
  if (className_.empty()) {
    raise("Error - attempt to create additional associations before class defined.");
  }
  if (namesTextsCommands.empty() || namesTextsCommands.size() % 3 != 0) {
    raise("Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command");
  }
  cRegistry key;
  key.ClassKey = ClassKey;
  for (std::size_t i = 0; i < namesTextsCommands.size(); i += 3) {
    key.SectionKey = kClasses + className_ + "\\shell\\" + namesTextsCommands[i];
    key.SetValue(namesTextsCommands[i + 1]);
    key.SectionKey += "\\command";
    key.SetValue(namesTextsCommands[i + 2]);
  }
}

}  // namespace quillmoor
