#include "controls/AccessibleName.h"

#include <gtk/gtk.h>
#include <wx/stattext.h>
#include <wx/window.h>

namespace quillmoor {
namespace {

/// The widget that gets the focus. The handle of a scrolling control is the frame around it, and a composite
/// control passes the focus to a part.
GtkWidget* focused(wxWindow& window) {
  for (wxWindow* const part : window.GetChildren()) {
    if (part->AcceptsFocus()) return focused(*part);
  }
  GtkWidget* const widget = window.GetHandle();
  GtkWidget* const inner = GTK_IS_SCROLLED_WINDOW(widget) ? gtk_bin_get_child(GTK_BIN(widget)) : nullptr;
  return inner != nullptr ? inner : widget;
}

gboolean leadTo(GtkWidget*, gboolean groupCycling, gpointer widget) {
  return gtk_widget_mnemonic_activate(GTK_WIDGET(widget), groupCycling);
}

}  // namespace

void SetAccessibleName(wxWindow& window, const wxString& name, AccessibleRole role,
                       std::function<wxString()> /*value*/) {
  AtkObject* const accessible = gtk_widget_get_accessible(focused(window));
  atk_object_set_name(accessible, name.utf8_str());
  if (role == AccessibleRole::progressBar) atk_object_set_role(accessible, ATK_ROLE_PROGRESS_BAR);
  if (role == AccessibleRole::picture) atk_object_set_role(accessible, ATK_ROLE_IMAGE);
  for (wxWindow* const part : window.GetChildren())
    atk_object_set_name(gtk_widget_get_accessible(part->GetHandle()), name.utf8_str());
}

/// When idle, wx replaces the label's mnemonic widget, for a composite control by one that takes no focus.
/// The label's own signal handler takes precedence.
void SetLabelFor(wxStaticText& label, wxWindow& control) {
  SetAccessibleName(control, label.GetLabelText());
  GtkWidget* const widget = focused(control);
  gtk_label_set_mnemonic_widget(GTK_LABEL(label.GetHandle()), widget);
  g_signal_connect_object(label.GetHandle(), "mnemonic-activate", G_CALLBACK(leadTo), widget,
                          GConnectFlags{});
}

}  // namespace quillmoor
