#include <wx/log.h>
#include <wx/notifmsg.h>

#include "shell/RunNotice.h"

namespace quillmoor {

void Notify(wxWindow* parent, const std::string& title, const std::string& text) {
  const wxLogNull quiet;  // a desktop without notifications is not an error
  wxNotificationMessage notice(wxString::FromUTF8(title), wxString::FromUTF8(text), parent);
  notice.Show();
}

}  // namespace quillmoor
