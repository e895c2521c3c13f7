#include "controls/AccessibleName.h"

#include <gtk/gtk.h>
#include <wx/stattext.h>
#include <wx/window.h>

namespace quillmoor {
namespace {

/// The widget that the focus goes to. Of a control that scrolls the handle is the frame around it.
GtkWidget* focused(wxWindow& window) {
  GtkWidget* const widget = window.GetHandle();
  GtkWidget* const inner = GTK_IS_SCROLLED_WINDOW(widget) ? gtk_bin_get_child(GTK_BIN(widget)) : nullptr;
  return inner != nullptr ? inner : widget;
}

}  // namespace

void SetAccessibleName(wxWindow& window, const wxString& name, AccessibleRole role,
                       std::function<wxString()> /*value*/) {
  AtkObject* const accessible = gtk_widget_get_accessible(focused(window));
  atk_object_set_name(accessible, name.utf8_str());
  if (role == AccessibleRole::progressBar) atk_object_set_role(accessible, ATK_ROLE_PROGRESS_BAR);
  if (role == AccessibleRole::picture) atk_object_set_role(accessible, ATK_ROLE_IMAGE);
}

void SetLabelFor(wxStaticText& label, wxWindow& control) {
  SetAccessibleName(control, label.GetLabelText());
  gtk_label_set_mnemonic_widget(GTK_LABEL(label.GetHandle()), focused(control));
}

}  // namespace quillmoor
