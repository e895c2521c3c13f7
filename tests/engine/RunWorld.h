// A whole world for a backup run: a server, profiles, settings, clock, network, and a display that remembers.
#pragma once

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "connectivity/ScriptedDialUp.h"
#include "engine/RecordingDisplay.h"
#include "engine/RunController.h"
#include "engine/TransferType.h"
#include "profiles/SiteProfileStore.h"
#include "support/ScriptedFtpServer.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {

/// Notes in which order a run calls them; each may be told to fail.
class RecordingStages final : public RunActions, public ArchiveStage {
 public:
  std::vector<std::string> calls;
  bool fail = false;

  void RunBeforeActions(RunLog&) override { note("before"); }
  void RunAfterActions(RunLog&) override { note("after"); }
  void RunProfileActions(const RunProfileFields& profile, RunLog&) override {
    note("profile " + profile.RunURL);
  }
  void CreateArchive(const std::string& profileId, RunState& run, RunLog&, RunDisplay&) override {
    archivedFolders.push_back(run.LocalTargetFolder);
    note("archive " + profileId);
  }
  std::vector<std::string> archivedFolders;

 private:
  void note(const std::string& call) {
    calls.push_back(call);
    if (fail) throw std::runtime_error(call);
  }
};

/// Every file and folder below, relative, folders with a slash at the end.
inline std::vector<std::string> treeOf(const std::filesystem::path& folder) {
  std::vector<std::string> tree;
  if (!std::filesystem::exists(folder)) return tree;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const auto relative = entry.path().lexically_relative(folder).generic_u8string();
    tree.push_back(std::string(relative.begin(), relative.end()) + (entry.is_directory() ? "/" : ""));
  }
  std::sort(tree.begin(), tree.end());
  return tree;
}

/// One enabled profile "site" that walks "/" of the server into `target()`, on a LAN that is up.
class RunWorld {
 public:
  RunWorld() {
    settings.AutoDial = 0;
    settings.AutoHangUp = 0;
    settings.ConnectionDelay = 0;
    settings.FtpRetryCount = 2;
    profile.name = "site";
    profile.Host = "127.0.0.1";
    profile.Port = std::to_string(server.port());
    profile.UserID = "joe";
    profile.Password = "hunter22";
    profile.SaveTo = folder.path().string();
    profile.Timeout = "10";
    profile.Folders = {"/"};
  }

  std::string profilesFile() const { return (folder / "Profiles.ini").string(); }
  std::filesystem::path target() const { return folder / "site"; }

  void save(SiteProfile one) { SaveSiteProfile(one, profilesFile()); }

  RunServices services() {
    return {.display = display,
            .pump =
                [this] {
                  if (pump) pump();
                },
            .settings = settings,
            .AsciiExtensions = {".txt", ".html"},
            .profilesFile = profilesFile(),
            .network = network,
            .dialUp = dialUp,
            .actions = stages,
            .archive = stages,
            .now = [this] { return clock ? *clock : LocalNow(); },
            .tick = [this] { return ticks ? *ticks : TickCountMs(); },
            .sleep =
                [this](std::chrono::milliseconds time) {
                  if (ticks) *ticks += time.count();
                }};
  }

  /// A whole run of the profiles saved, `profile` among them.
  std::vector<ProfileResult> run() {
    if (!profile.name.empty()) save(profile);
    controller = std::make_unique<RunController>(services());
    return controller->RunBackup();
  }

  testing::TemporaryFolder folder;
  testing::ScriptedFtpServer server;
  RecordingDisplay display;
  ApplicationSettings settings;
  SiteProfile profile;
  testing::ScriptedDialUp dialUp;
  RecordingStages stages;
  NetworkSource network = [](std::uint32_t& kinds) {
    kinds = kNetworkLan;
    return true;
  };
  std::function<void()> pump;
  std::unique_ptr<RunController> controller;
  std::optional<LocalDateTime> clock;  // stands still when set
  std::optional<std::int64_t> ticks;   // goes on by what is slept when set
};

}  // namespace quillmoor
