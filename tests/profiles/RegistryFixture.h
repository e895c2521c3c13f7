// A registry that only the test uses, and values in it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "TestPlatform.h"
#include "profiles/cRegistry.h"

namespace quillmoor {

class RegistryFixture : public ::testing::Test {
 protected:
  static cRegistry value(const std::string& name, std::uint32_t type = 1) {
    cRegistry registry;
    registry.ClassKey = HKEY_LOCAL_MACHINE_VALUE;
    registry.SectionKey = "Software\\Test";
    registry.ValueKey = name;
    registry.ValueType = type;
    return registry;
  }

  testing::OwnRegistry own;
};

}  // namespace quillmoor
