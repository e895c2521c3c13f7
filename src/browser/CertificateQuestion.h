// Asks the user whether a certificate that the system cannot verify is the server's.
#pragma once

#include <string>

#include "engine/CertificateText.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

/// Shows a message box, and returns true when the user accepts the certificate. `changed`: the user has
/// accepted another one of this server before.
bool AsksToAccept(const std::string& host, const TlsCertificate& certificate, bool changed,
                  UserPrompts& prompts);

}  // namespace quillmoor
