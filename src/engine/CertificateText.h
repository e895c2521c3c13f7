// A server's certificate in words, for a user to decide about.
#pragma once

#include <string>

#include "platform/net/TlsCertificate.h"

namespace quillmoor {

/// What the certificate says, and whether this system verifies it: a line each, with its line break.
std::string CertificateText(const TlsCertificate& certificate);

}  // namespace quillmoor
