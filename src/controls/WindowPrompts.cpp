#include "controls/WindowPrompts.h"

#include <wx/dirdlg.h>
#include <wx/filedlg.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/msgdlg.h>

namespace quillmoor {
namespace {

wxString fromUtf8(std::string_view text) {
  return wxString::FromUTF8(text.data(), text.size());
}

long styleOf(Message::Icon icon) {
  switch (icon) {
    case Message::Icon::critical:
      return wxICON_ERROR;
    case Message::Icon::warning:
      return wxICON_WARNING;
    case Message::Icon::information:
      break;
  }
  return wxICON_INFORMATION;
}

long styleOf(const Message& message) {
  long style = styleOf(message.icon);
  switch (message.buttons) {
    case Message::Buttons::ok:
      return style | wxOK;
    case Message::Buttons::yesNo:
      style |= wxYES_NO;
      break;
    case Message::Buttons::yesNoCancel:
      style |= wxYES_NO | wxCANCEL;
      break;
  }
  if (message.defaultButton == 2) style |= wxNO_DEFAULT;
  if (message.defaultButton == 3) style |= wxCANCEL_DEFAULT;
  return style;
}

/// The folder itself, or its nearest existing parent; empty when there is none.
wxString nearestFolder(const wxString& path) {
  wxFileName folder = wxFileName::DirName(path);
  if (!folder.IsAbsolute()) return "";
  while (!folder.DirExists() && folder.GetDirCount() > 0) folder.RemoveLastDir();
  return folder.DirExists() ? folder.GetPath() : wxString();
}

}  // namespace

UserPrompts::Answer WindowPrompts::ShowMessage(const Message& message) {
  wxMessageDialog box(form_, fromUtf8(message.text), fromUtf8(message.title), styleOf(message));
  switch (box.ShowModal()) {
    case wxID_OK:
      return Answer::ok;
    case wxID_YES:
      return Answer::yes;
    case wxID_NO:
      return Answer::no;
    default:
      if (message.buttons == Message::Buttons::ok) return Answer::ok;
      return message.buttons == Message::Buttons::yesNo ? Answer::no : Answer::cancel;
  }
}

std::optional<std::string> WindowPrompts::ChooseFile(std::string_view title, std::string_view filter,
                                                     const std::string& chosen) {
  wxString pattern = fromUtf8(filter);
  // On systems where "*.*" does not match names without a dot it would hide them.
  pattern.Replace("|*.*", wxString("|") + wxFileSelectorDefaultWildcardStr);
  const wxFileName start(fromUtf8(chosen));
  wxFileDialog chooser(form_, fromUtf8(title), nearestFolder(start.GetPath()),
                       start.FileExists() ? start.GetFullName() : wxString(), pattern,
                       wxFD_OPEN | wxFD_FILE_MUST_EXIST);
  if (chooser.ShowModal() != wxID_OK) return std::nullopt;
  return chooser.GetPath().utf8_string();
}

std::optional<std::string> WindowPrompts::ChooseFolder(std::string_view title, const std::string& chosen) {
  wxDirDialog chooser(form_, fromUtf8(title), nearestFolder(fromUtf8(chosen)), wxDD_DEFAULT_STYLE);
  if (chooser.ShowModal() != wxID_OK) return std::nullopt;
  return chooser.GetPath().utf8_string();
}

}  // namespace quillmoor
