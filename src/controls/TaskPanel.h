// A task panel: groups of items that do something when they are clicked, each known by its ID.
#pragma once

#include <wx/button.h>
#include <wx/panel.h>

#include <functional>
#include <string>
#include <vector>

#include "controls/ReportControl.h"

namespace quillmoor {

class TaskPanel : public wxPanel {
 public:
  TaskPanel(wxWindow* parent, const wxString& name);

  struct Command {
    int id;
    const char* caption;  // may have a mnemonic
    const char* picture;
  };
  struct Item {
    int id;
    std::string caption;
  };

  /// A group of commands that are always there.
  void addCommands(const wxString& title, const std::vector<Command>& commands);
  /// A group that lists any number of items, with a picture before each, and scrolls. One to a panel, below
  /// the commands.
  void addList(const wxString& title, const char* picture);

  void setItems(const std::vector<Item>& items);
  /// Shows in bold which item is the current one; 0: none.
  void markItem(int id);

  /// An item was clicked, or chosen with Enter. An arrow key chooses nothing.
  std::function<void(int id)> onItem;

  wxButton* command(int id) const;
  ReportControl& list() const { return *list_; }

 private:
  void addTitle(const wxString& title);
  void rowChosen(std::size_t row);

  struct Button {
    int id;
    wxButton* button;
  };
  std::vector<Button> commands_;
  std::vector<Item> items_;
  ReportControl* list_ = nullptr;
  const char* picture_ = "";
};

}  // namespace quillmoor
