// What a server's certificate says (RFC 5280), for a user to decide about.
#pragma once

#include <string>
#include <vector>

struct x509_st;

namespace quillmoor {

struct TlsCertificate {
  std::string fingerprint;         // SHA-256 of the whole certificate: 64 lower-case hexadecimal digits
  std::string subject, issuer;     // printable
  std::vector<std::string> names;  // the host names and addresses that it is for, printable
  std::string validFrom, validTo;  // UTC, "2026-11-26"
  std::string problem;  // why the system does not verify it, as part of a sentence; "" when it does
};

/// What the certificate says; `problem` is left empty. Long texts are cut.
TlsCertificate ReadTlsCertificate(x509_st* certificate);

/// For one line of a log: fingerprint, subject, names, issuer and dates.
std::string DescribeCertificate(const TlsCertificate& certificate);

}  // namespace quillmoor
