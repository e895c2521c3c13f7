#include "engine/CertificateText.h"

#include "base/SplitText.h"

namespace quillmoor {

std::string CertificateText(const TlsCertificate& certificate) {
  return "SHA-256 fingerprint: " + certificate.fingerprint + "\nIssued to: " + certificate.subject +
         "\nFor: " + JoinText(certificate.names, ", ") + "\nIssued by: " + certificate.issuer +
         "\nValid: from " + certificate.validFrom + " to " + certificate.validTo +
         "\nVerified by this system: " +
         (certificate.problem.empty() ? "yes\n" : "no, " + certificate.problem + "\n");
}

}  // namespace quillmoor
