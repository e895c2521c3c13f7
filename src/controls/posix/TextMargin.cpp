#include "controls/TextMargin.h"

#include <gtk/gtk.h>
#include <wx/textctrl.h>

namespace quillmoor {

void SetRightMargin(wxTextCtrl& text, int pixels) {
  GtkWidget* const view = gtk_bin_get_child(GTK_BIN(text.GetHandle()));  // inside its scrolled window
  gtk_text_view_set_right_margin(GTK_TEXT_VIEW(view), pixels);
}

}  // namespace quillmoor
