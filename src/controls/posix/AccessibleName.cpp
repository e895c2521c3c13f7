#include "controls/AccessibleName.h"

#include <gtk/gtk.h>
#include <wx/window.h>

namespace quillmoor {

void SetAccessibleName(wxWindow& window, const wxString& name, AccessibleRole role,
                       std::function<wxString()> /*value*/) {
  GtkWidget* widget = window.GetHandle();
  // Of a control that scrolls this is the frame; the focus goes to what is in it.
  if (GTK_IS_SCROLLED_WINDOW(widget) && gtk_bin_get_child(GTK_BIN(widget)) != nullptr)
    widget = gtk_bin_get_child(GTK_BIN(widget));
  AtkObject* const accessible = gtk_widget_get_accessible(widget);
  atk_object_set_name(accessible, name.utf8_str());
  if (role == AccessibleRole::progressBar) atk_object_set_role(accessible, ATK_ROLE_PROGRESS_BAR);
  if (role == AccessibleRole::picture) atk_object_set_role(accessible, ATK_ROLE_IMAGE);
}

}  // namespace quillmoor
