#include "platform/registry/RegistryApi.h"

namespace quillmoor {

std::string RegistryRootName(std::uint32_t root) {
  switch (root) {
    case HKEY_CLASSES_ROOT_VALUE:
      return "HKEY_CLASSES_ROOT";
    case HKEY_CURRENT_USER_VALUE:
      return "HKEY_CURRENT_USER";
    case HKEY_LOCAL_MACHINE_VALUE:
      return "HKEY_LOCAL_MACHINE";
    case HKEY_USERS_VALUE:
      return "HKEY_USERS";
    case HKEY_CURRENT_CONFIG_VALUE:
      return "HKEY_CURRENT_CONFIG";
    default:
      return "";
  }
}

}  // namespace quillmoor
