// Changes of the environment that tests make for a while, as this system does them.
#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/TemporaryFolder.h"

namespace quillmoor::testing {

/// Bytes of a file, set by its size alone, that takes long to copy and holds next to nothing.
inline constexpr std::uintmax_t kLongToCopy = std::uintmax_t{1} << 36;

/// Whether a reset connection can be distinguished from a closed one.
inline bool tellsResetFromEnd() {
  return true;
}

/// The TCP options for the seconds of silence after which the system probes a connection, and between the
/// probes; whether the system returns them.
inline constexpr int kProbeAfter = TCP_KEEPIDLE, kProbeEvery = TCP_KEEPINTVL;
inline bool tellsProbes() {
  return true;
}

inline void setEnvironment(const char* name, const std::string& value) {
  ::setenv(name, value.c_str(), 1);
}
inline void unsetEnvironment(const char* name) {
  ::unsetenv(name);
}

/// An empty registry in place of the user's own. It stays turned away from that when this is gone: no later
/// test must ever reach it.
class OwnRegistry {
 public:
  OwnRegistry() { setEnvironment("XDG_CONFIG_HOME", folder.path().string()); }

  /// From now on nothing can be stored: a file lies where the folder was.
  void refuseWrites() {
    std::filesystem::remove_all(folder.path());
    writeFile(folder.path(), "");
  }

  /// While it lives, nothing may write. A write gives the file another number, which shows also where the
  /// user may write everywhere.
  class NoWrites {
   public:
    NoWrites(const OwnRegistry& own, const std::vector<const char*>&)
        : store_(own.store), before_(number()) {}
    ~NoWrites() { EXPECT_EQ(number(), before_) << "written"; }
    NoWrites(const NoWrites&) = delete;
    NoWrites& operator=(const NoWrites&) = delete;

   private:
    std::uint64_t number() const {
      struct stat found {};
      return ::stat(store_.c_str(), &found) == 0 ? found.st_ino : 0;
    }
    const std::filesystem::path store_;
    const std::uint64_t before_;
  };

  TemporaryFolder folder;
  std::filesystem::path store = folder / "quillmoor" / "registry.reg";
};

}  // namespace quillmoor::testing
