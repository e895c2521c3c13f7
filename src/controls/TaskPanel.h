// A task panel: groups of clickable items, each identified by its ID.
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

  /// Adds a group of fixed commands.
  void addCommands(const wxString& title, const std::vector<Command>& commands);
  /// Adds a scrolling group with any number of items, each with a picture. At most one per panel, below the
  /// commands.
  void addList(const wxString& title, const char* picture);

  void setItems(const std::vector<Item>& items);
  /// Shows the current item in bold; 0: none.
  void markItem(int id);

  /// Called when an item is clicked or chosen with Enter. Arrow keys choose nothing.
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
