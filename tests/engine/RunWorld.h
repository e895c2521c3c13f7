// All that a backup run works with: a server, profiles, settings, clock, network, and a display that records.
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
#include "engine/RunController.h"
#include "engine/RunDisplay.h"
#include "engine/TransferType.h"
#include "profiles/SiteProfileStore.h"
#include "support/ScriptedFtpServer.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {

/// Records everything that a run shows.
class RecordingDisplay final : public RunDisplay {
 public:
  struct Line {
    std::string text;
    Colour colour;
    bool emphasis = false;  // appended with the colour of button faces set first
    bool operator==(const Line&) const = default;
  };
  std::vector<Line> lines;
  std::vector<std::size_t> trims;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::vector<Colour>> rowColours;
  std::vector<int> progress;
  std::vector<std::string> rates;
  std::vector<std::string> sizes;
  std::vector<bool> hourglass;
  std::vector<bool> running;

  std::string log() const {
    std::string all;
    for (const Line& line : lines) all += line.text;
    return all;
  }
  bool logged(const std::string& text) const { return log().find(text) != std::string::npos; }
  int count(const std::string& text) const {
    int found = 0;
    const std::string all = log();
    for (auto at = all.find(text); at != std::string::npos; at = all.find(text, at + text.size())) ++found;
    return found;
  }
  /// The first line that begins with the text.
  Line lineWith(const std::string& text) const {
    for (const Line& line : lines)
      if (line.text.starts_with(text)) return line;
    return {};
  }
  std::string item(std::size_t row, ReportColumn column) const {
    return rows.at(row).at(static_cast<std::size_t>(column));
  }

  std::size_t logLength() const override { return log().size(); }
  void trimLog(std::size_t characters) override { trims.push_back(characters); }
  void setLogColour(Colour colour) override {
    emphasis_ = colour_ == kButtonFace;
    colour_ = colour;
  }
  void insertLogText(std::string_view text) override {
    lines.push_back({std::string(text), colour_, emphasis_});
  }
  void showProgress(int percent) override { progress.push_back(percent); }
  void showRate(const std::string& text) override { rates.push_back(text); }
  void showFileSize(const std::string& text) override { sizes.push_back(text); }
  std::size_t addReportRow() override {
    rows.emplace_back(kReportColumns);
    rowColours.emplace_back(kReportColumns);
    return rows.size() - 1;
  }
  void setReportItem(std::size_t row, ReportColumn column, const std::string& text) override {
    rows.at(row).at(static_cast<std::size_t>(column)) = text;
  }
  void setReportColour(std::size_t row, ReportColumn column, Colour colour) override {
    rowColours.at(row).at(static_cast<std::size_t>(column)) = colour;
  }
  void repopulateReport() override {}
  void showBusyCursor(bool busy) override { hourglass.push_back(busy); }
  void showRunning(bool now) override { running.push_back(now); }

 private:
  Colour colour_;
  bool emphasis_ = false;
};

/// Records the order in which a run calls them; all of them fail when `fail` is set.
class RecordingStages final : public RunActions, public ArchiveStage {
 public:
  std::vector<std::string> calls;
  bool fail = false;

  void RunBeforeActions(RunLog&) override { note("before"); }
  void RunAfterActions(RunLog&) override { note("after"); }
  void RunProfileActions(const SiteProfile&, RunLog&) override { note("profile"); }
  void CreateArchive(const std::string& profileId, RunState&, RunLog&, RunDisplay&) override {
    note("archive " + profileId);
  }

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
            .pump = [this] { pump(); },
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
  std::function<void()> pump = [] {};
  std::unique_ptr<RunController> controller;
  std::optional<LocalDateTime> clock;  // stands still when set
  std::optional<std::int64_t> ticks;   // goes on by what is slept when set
};

}  // namespace quillmoor
