// All that a remote browser works with: a server, a profile editor, and a window that records its calls.
#pragma once

#include <future>
#include <memory>
#include <string>
#include <vector>

#include "TestPlatform.h"
#include "browser/RemoteBrowser.h"
#include "profiles/ScriptedPrompts.h"
#include "profiles/SiteProfileEditor.h"
#include "support/ScriptedFtpServer.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {

/// A window that records the calls it receives.
class RecordingView final : public BrowserView {
 public:
  std::vector<std::string> calls;
  std::vector<std::string> folders;  // of showFolder; "+" before a new one
  bool isClosed = false;

  void rowsCleared() override { calls.emplace_back("cleared"); }
  void rowsAdded(std::size_t first) override { calls.push_back("added from " + std::to_string(first)); }
  void rowsChanged(std::size_t first, std::size_t last) override {
    calls.push_back("changed " + std::to_string(first) + " to " + std::to_string(last));
  }
  void showFolder(const std::string& path, bool isNew) override {
    folders.push_back((isNew ? "+" : "") + path);
  }
  void logChanged() override { calls.emplace_back("log"); }
  void showBusy(bool busy) override { calls.emplace_back(busy ? "busy" : "idle"); }
  void closed() override { isClosed = true; }
};

/// Holds the server at a command until it is opened; the server then answers as usual.
class Gate {
 public:
  testing::ScriptedFtpServer::Action action() {
    return [this](testing::ScriptedFtpServer::Session& session) {
      reached_.set_value();
      open_.get_future().wait();
      session.answerAsUsual();
    };
  }
  void waitUntilReached() { reached_.get_future().wait(); }
  void open() { open_.set_value(); }

 private:
  std::promise<void> reached_, open_;
};

class BrowserWorld {
 public:
  BrowserWorld() {
    settings.ConnectionDelay = 0;
    settings.Timeout = 10;
    site.Host = "127.0.0.1";
    site.Port = std::to_string(server.port());
    site.UserID = "joe";
    site.Password = "hunter22";
  }

  /// Opens the window and waits for its list.
  void open() {
    make();
    browser->connect();
    finish();
  }
  void make() {
    browser = std::make_unique<RemoteBrowser>(
        site, settings, foldersOnly, view, prompts,
        RemoteBrowser::Editing{
            .addFolders =
                [this](const std::vector<std::string>& folders) { return editor.AddFolders(folders); },
            .acceptCertificate =
                [this](const std::string& fingerprint) { editor.shown.Certificate = fingerprint; },
            .noteTlsOffered = [this] { editor.NoteTlsOffered(site); }});
  }

  /// Takes events until the operation in progress is over.
  void finish() {
    takeUntil([this] { return !browser->busy(); });
  }
  template <class Condition>
  void takeUntil(Condition condition) {
    while (!condition()) {
      browser->waitForEvents();
      browser->takeEvents();
    }
  }
  void activate(const std::string& name) {
    browser->activate(rowOf(name));
    finish();
  }
  void refresh() {
    browser->refresh();
    finish();
  }
  void changeFolder(const std::string& path) {
    browser->changeFolder(path);
    finish();
  }

  /// Icon and name of every row.
  std::vector<std::string> rows() const {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < browser->rowCount(); ++i)
      all.push_back(std::string(IconKey(browser->icon(i))) + " " + browser->cell(i, 0));
    return all;
  }
  std::vector<std::string> tickedRows() const {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < browser->rowCount(); ++i)
      if (browser->checked(i)) all.push_back(browser->cell(i, 0));
    return all;
  }
  std::size_t rowOf(const std::string& name) const {
    for (std::size_t i = 0; i < browser->rowCount(); ++i)
      if (browser->cell(i, 0) == name) return i;
    ADD_FAILURE() << "no row " << name;
    return browser->rowCount();
  }
  std::vector<std::string> logLines() const {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < browser->log().lineCount(); ++i) lines.push_back(browser->log().line(i).text);
    return lines;
  }

  /// The commands that the server has received, without the first ones.
  std::vector<std::string> commandsSince(std::size_t first) const {
    auto all = server.commands();
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(std::min(first, all.size())));
    return all;
  }

  testing::OwnRegistry registry;
  testing::TemporaryFolder folder;
  testing::ScriptedFtpServer server;
  testing::ScriptedPrompts prompts;
  SiteProfileEditor editor{(folder / "Profiles.ini").string(), prompts};
  ApplicationSettings settings;
  SiteProfile site;
  bool foldersOnly = false;
  RecordingView view;
  std::unique_ptr<RemoteBrowser> browser;
};

}  // namespace quillmoor
