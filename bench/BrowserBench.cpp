// BrowserBench FOLDER   opens the folder of the server that FTP_HOST, FTP_PORT, FTP_USER and FTP_PASSWORD
// name in the remote browser, without a window, and prints how long its commands take; medians of nine
// rounds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "browser/BrowserRow.h"
#include "browser/RemoteBrowser.h"
#include "engine/ListingParser.h"

namespace {

using namespace quillmoor;

struct NoView final : BrowserView {
  void rowsCleared() override {}
  void rowsAdded(std::size_t) override {}
  void rowsChanged(std::size_t, std::size_t) override {}
  void showFolder(const std::string&, bool) override {}
  void logChanged() override {}
  void showBusy(bool) override {}
  void closed() override {}
};

struct NoPrompts final : UserPrompts {
  Answer ShowMessage(const Message&) override { return Answer::ok; }
  std::optional<std::string> ChooseFile(std::string_view, std::string_view) override { return {}; }
  std::optional<std::string> ChooseFolder(std::string_view) override { return {}; }
};

std::string given(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

void measure(const char* what, const std::function<void()>& prepare, const std::function<void()>& work) {
  std::vector<double> times;
  for (int round = 0; round < 9; ++round) {
    prepare();
    const auto begin = std::chrono::steady_clock::now();
    work();
    times.push_back(
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
  }
  std::sort(times.begin(), times.end());
  std::printf("| %s | %.1f ms | %.1f to %.1f ms |\n", what, times[times.size() / 2], times.front(),
              times.back());
}

/// The listing with which the rows came, as the server would have sent it.
std::string listingOf(const RemoteBrowser& browser) {
  std::string text;
  for (std::size_t row = 1; row < browser.rowCount(); ++row) {
    text += (browser.icon(row) == RowIcon::FolderClose ? "drwxr-xr-x    1 " : "-rw-r--r--    1 ") +
            browser.cell(row, 3) + " " + browser.cell(row, 4) + " " + browser.cell(row, 1) + " " +
            browser.cell(row, 2) + " " + browser.cell(row, 0) + "\r\n";
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: BrowserBench FOLDER\n");
    return 2;
  }
  SiteProfile site;
  site.Host = given("FTP_HOST");
  site.Port = given("FTP_PORT");
  site.UserID = given("FTP_USER");
  site.Password = given("FTP_PASSWORD");
  site.DefaultDir = argv[1];
  const ApplicationSettings settings;
  NoView view;
  NoPrompts prompts;
  SiteProfileEditor editor("", prompts);
  RemoteBrowser browser(site, settings, false, view, prompts,
                        [&](const std::vector<std::string>& folders) { editor.AddFolders(folders); });
  const auto settle = [&] {
    while (browser.busy()) {
      browser.waitForNews();
      browser.takeNews();
    }
  };
  const auto nothing = [] {};
  browser.connect();
  settle();
  std::printf("%zu rows\n", browser.rowCount());

  measure("Refresh, server and link tests included", nothing, [&] {
    browser.refresh();
    settle();
  });
  const std::string listing = listingOf(browser);
  measure("from the listing's text to rows", nothing,
          [&] { FolderRows(ParseListing(listing, LocalNow()), argv[1], false); });
  std::size_t characters = 0;
  measure("the texts of all rows", nothing, [&] {
    for (std::size_t row = 0; row < browser.rowCount(); ++row) {
      for (std::size_t column = 0; column < kBrowserColumns.size(); ++column)
        characters += browser.cell(row, column).size();
    }
  });
  measure(
      "Select All", [&] { browser.unselectAll(); }, [&] { browser.selectAll(); });
  measure(
      "Unselect All", [&] { browser.selectAll(); }, [&] { browser.unselectAll(); });
  browser.selectAll();
  measure(
      "Add Checked, all new", [&] { editor.ClearFolders(); }, [&] { browser.addChecked(); });
  measure("Add Checked, all known", nothing, [&] { browser.addChecked(); });
  std::printf("%zu folders added, %zu characters shown\n", editor.shown.Folders.size(), characters / 9);
}
