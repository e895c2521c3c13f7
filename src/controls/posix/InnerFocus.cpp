#include "controls/InnerFocus.h"

#include <gtk/gtk.h>
#include <wx/window.h>

namespace quillmoor {
namespace {

gboolean focused(GtkWidget*, GdkEvent*, gpointer control) {
  auto* const window = static_cast<wxWindow*>(control);
  wxChildFocusEvent event(window);
  window->HandleWindowEvent(event);
  return FALSE;
}

void watch(GtkWidget* part, gpointer control) {
  if (gtk_widget_get_can_focus(part)) g_signal_connect(part, "focus-in-event", G_CALLBACK(focused), control);
  if (GTK_IS_CONTAINER(part)) gtk_container_forall(GTK_CONTAINER(part), watch, control);
}

}  // namespace

void ReportInnerFocus(wxWindow& control) {
  gtk_container_forall(GTK_CONTAINER(control.GetHandle()), watch, &control);
}

}  // namespace quillmoor
