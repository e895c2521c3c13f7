#include "browser/CertificateQuestion.h"

namespace quillmoor {

bool AsksToAccept(const std::string& host, const TlsCertificate& certificate, bool changed,
                  UserPrompts& prompts) {
  Message question{"Quillmoor", "", Message::Buttons::yesNo, Message::Icon::warning, 2};
  question.text =
      changed
          ? "The certificate of " + host +
                " has changed: it is not the one that you have accepted. If the server's operator has "
                "not replaced it, another computer is posing as the server.\n\n"
          : "The certificate of " + host + " is unknown. Another computer may be posing as the server.\n\n";
  question.text +=
      CertificateText(certificate) +
      "\nCompare the fingerprint with the one that the server's operator gives you. Do you accept "
      "the certificate for this profile, and log in?";
  return prompts.ShowMessage(question) == UserPrompts::Answer::yes;
}

}  // namespace quillmoor
