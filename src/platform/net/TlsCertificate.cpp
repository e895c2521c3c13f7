#include "platform/net/TlsCertificate.h"

#include <asio.hpp>
#include <cstdio>
#include <ctime>

#include "platform/net/OpenSslFunctions.h"
#include "platform/system/PrintableText.h"

namespace quillmoor {
namespace {

constexpr std::size_t kLongestText = 120;
constexpr std::size_t kMostNames = 10;

/// Whoever made the certificate chose its texts.
std::string shown(std::string text) {
  if (text.size() > kLongestText) {
    text.resize(kLongestText);
    text += "...";
  }
  return PrintableText(text);
}

std::string fingerprintOf(const X509* certificate) {
  unsigned char digest[32];
  unsigned int size = sizeof digest;
  if (OpenSsl().X509_digest(certificate, OpenSsl().EVP_sha256(), digest, &size) != 1) return "";
  std::string text;
  for (const unsigned char byte : digest) {
    constexpr char kDigits[] = "0123456789abcdef";
    text += {kDigits[byte / 16], kDigits[byte % 16]};
  }
  return text;
}

std::string nameText(const X509_NAME* name) {
  const OpenSslFunctions& ssl = OpenSsl();
  BIO* const text = ssl.BIO_new(ssl.BIO_s_mem());
  if (!text) return "";
  ssl.X509_NAME_print_ex(text, name, 0, XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB));
  char bytes[kLongestText + 1];
  const int size = ssl.BIO_read(text, bytes, sizeof bytes);
  ssl.BIO_free(text);
  return size > 0 ? shown(std::string(bytes, static_cast<std::size_t>(size))) : "";
}

/// RFC 5280 §4.2.1.6: a host name, or the bytes of an address.
std::string nameOf(const GENERAL_NAME* name) {
  const OpenSslFunctions& ssl = OpenSsl();
  if (name->type != GEN_DNS && name->type != GEN_IPADD) return "";
  const ASN1_STRING* const text = name->type == GEN_DNS ? name->d.dNSName : name->d.iPAddress;
  const unsigned char* const bytes = ssl.ASN1_STRING_get0_data(text);
  const auto size = static_cast<std::size_t>(ssl.ASN1_STRING_length(text));
  if (name->type == GEN_DNS) return shown(std::string(bytes, bytes + size));
  const auto address = [&]<class Address>(Address) {
    typename Address::bytes_type raw;
    std::copy(bytes, bytes + size, raw.begin());
    return Address(raw).to_string();
  };
  if (size == 4) return address(asio::ip::address_v4());
  if (size == 16) return address(asio::ip::address_v6());
  return "";
}

std::vector<std::string> namesOf(const X509* certificate) {
  const OpenSslFunctions& ssl = OpenSsl();
  std::vector<std::string> names;
  auto* const list =
      static_cast<GENERAL_NAMES*>(ssl.X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
  const auto* const stack = reinterpret_cast<const OPENSSL_STACK*>(list);
  const int count = list ? ssl.OPENSSL_sk_num(stack) : 0;
  for (int i = 0; i < count && names.size() < kMostNames; ++i) {
    std::string name = nameOf(static_cast<const GENERAL_NAME*>(ssl.OPENSSL_sk_value(stack, i)));
    if (!name.empty()) names.push_back(std::move(name));
  }
  ssl.GENERAL_NAMES_free(list);
  return names;
}

std::string dateText(const ASN1_TIME* time) {
  std::tm parts{};
  if (OpenSsl().ASN1_TIME_to_tm(time, &parts) != 1) return "?";
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
  return text;
}

}  // namespace

TlsCertificate ReadTlsCertificate(X509* certificate) {
  const OpenSslFunctions& ssl = OpenSsl();
  return {.fingerprint = fingerprintOf(certificate),
          .subject = nameText(ssl.X509_get_subject_name(certificate)),
          .issuer = nameText(ssl.X509_get_issuer_name(certificate)),
          .names = namesOf(certificate),
          .validFrom = dateText(ssl.X509_get0_notBefore(certificate)),
          .validTo = dateText(ssl.X509_get0_notAfter(certificate)),
          .problem = ""};
}

std::string DescribeCertificate(const TlsCertificate& certificate) {
  std::string names;
  for (const std::string& name : certificate.names) names += (names.empty() ? " for " : ", ") + name;
  return "SHA-256 fingerprint " + certificate.fingerprint + ", issued to " + certificate.subject +
         shown(names) + " by " + certificate.issuer + ", valid from " + certificate.validFrom + " to " +
         certificate.validTo;
}

}  // namespace quillmoor
