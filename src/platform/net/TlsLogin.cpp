#include "platform/net/TlsLogin.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "base/Fingerprint.h"
#include "platform/net/NetError.h"
#include "platform/net/OpenSslFunctions.h"

namespace quillmoor {
namespace {

constexpr std::size_t kReadAhead = 128 * 1024;

struct Group {
  int number;  // as OpenSSL reports the negotiated one
  const char* name;
};
constexpr std::array kGroups{Group{NID_X25519, "X25519"}, Group{NID_X9_62_prime256v1, "P-256"},
                             Group{NID_X448, "X448"}, Group{NID_secp384r1, "P-384"},
                             Group{NID_secp521r1, "P-521"}};

/// All groups with the chosen one in front: the client sends a key for the first only, and a server that
/// wants another costs a round trip for each connection.
std::string groupsStartingWith(long number) {
  std::string list;
  for (const bool chosen : {true, false}) {
    for (const Group& group : kGroups) {
      if ((group.number == number) == chosen) list += (list.empty() ? "" : ":") + std::string(group.name);
    }
  }
  return list;
}

[[noreturn]] void raiseUnusable(const char* what) {
  throw NetError(NetFailure::badArgument, what);
}

std::string libraryError() {
  const char* const reason = OpenSsl().ERR_reason_error_string(OpenSsl().ERR_peek_last_error());
  return reason ? reason : "unknown error of the TLS library";
}

bool isAddress(const std::string& host) {
  asio::error_code error;
  asio::ip::make_address(host, error);
  return !error;
}

}  // namespace

TlsLogin::TlsLogin(std::string host, std::string accepted)
    : host_(std::move(host)), accepted_(PlainFingerprint(accepted)) {
  // The root's dot ends a complete name, but no certificate has it.
  if (host_.ends_with('.')) host_.pop_back();
  try {
    const OpenSslFunctions& ssl = OpenSsl();
    ssl.ERR_clear_error();
    context_ = ssl.SSL_CTX_new(ssl.TLS_client_method());
    if (!context_) raiseUnusable("TLS cannot be used: its library gives no context");
  } catch (const std::runtime_error& error) {
    raiseUnusable(error.what());
  }
  const OpenSslFunctions& ssl = OpenSsl();
  ssl.SSL_CTX_ctrl(context_, SSL_CTRL_SET_MIN_PROTO_VERSION, TLS1_2_VERSION, nullptr);
  ssl.SSL_CTX_set_options(context_, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
  // A command may be sent in parts, from a buffer that has moved meanwhile.
  ssl.SSL_CTX_ctrl(context_, SSL_CTRL_MODE,
                   SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER, nullptr);
  ssl.SSL_CTX_ctrl(context_, SSL_CTRL_SET_SESS_CACHE_MODE, SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL,
                   nullptr);
  // Fewer system calls: a record's head is not read by itself.
  ssl.SSL_CTX_ctrl(context_, SSL_CTRL_SET_READ_AHEAD, 1, nullptr);
  ssl.SSL_CTX_set_default_read_buffer_len(context_, kReadAhead);
  ssl.SSL_CTX_set_ex_data(context_, 0, this);
  ssl.SSL_CTX_sess_set_new_cb(context_, &TlsLogin::keepSession);
  TrustSystemRoots(context_);
}

TlsLogin::~TlsLogin() {
  const OpenSslFunctions& ssl = OpenSsl();
  if (newest_) ssl.SSL_SESSION_free(newest_);
  if (context_) ssl.SSL_CTX_free(context_);
}

/// Servers that require a data connection to resume the control connection's session take the newest ticket
/// of the login: in TLS 1.3 the library declares one used up when its connection has brought another.
int TlsLogin::keepSession(SSL* connection, SSL_SESSION* session) {
  const OpenSslFunctions& ssl = OpenSsl();
  auto& login = *static_cast<TlsLogin*>(ssl.SSL_CTX_get_ex_data(ssl.SSL_get_SSL_CTX(connection), 0));
  if (login.newest_) ssl.SSL_SESSION_free(login.newest_);
  login.newest_ = session;
  return 1;  // the session is ours now
}

TlsConnection::TlsConnection(TlsLogin& login, TcpSocket& socket) : login_(login), socket_(socket) {
  const OpenSslFunctions& ssl = OpenSsl();
  static BIO_METHOD* const method = [&] {
    BIO_METHOD* const made = ssl.BIO_meth_new(BIO_TYPE_SOURCE_SINK, "socket");
    if (made) {
      ssl.BIO_meth_set_read(made, &TlsConnection::readBio);
      ssl.BIO_meth_set_write(made, &TlsConnection::writeBio);
      ssl.BIO_meth_set_ctrl(made, &TlsConnection::controlBio);
    }
    return made;
  }();
  ssl_ = ssl.SSL_new(login.context_);
  BIO* const bio = ssl_ && method ? ssl.BIO_new(method) : nullptr;
  if (!bio) {
    if (ssl_) ssl.SSL_free(ssl_);
    raiseUnusable("TLS cannot be used: its library gives no connection");
  }
  ssl.BIO_set_data(bio, this);
  ssl.BIO_set_init(bio, 1);
  ssl.SSL_set_bio(ssl_, bio, bio);
  ssl.SSL_set_connect_state(ssl_);
  if (isAddress(login.host_)) {
    ssl.X509_VERIFY_PARAM_set1_ip_asc(ssl.SSL_get0_param(ssl_), login.host_.c_str());
  } else {
    ssl.SSL_set1_host(ssl_, login.host_.c_str());
    ssl.SSL_ctrl(ssl_, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, login.host_.data());
  }
  if (!login.groups_.empty()) ssl.SSL_ctrl(ssl_, SSL_CTRL_SET_GROUPS_LIST, 0, login.groups_.data());
  if (login.newest_) ssl.SSL_set_session(ssl_, login.newest_);
}

TlsConnection::~TlsConnection() {
  const OpenSslFunctions& ssl = OpenSsl();
  // Also when the socket is gone already: freeing an established connection that was not shut down would
  // declare its session broken, and the login's next connection could not resume it.
  if (established_ && !failure_) ssl.SSL_shutdown(ssl_);
  ssl.SSL_free(ssl_);
  ssl.ERR_clear_error();
}

int TlsConnection::readBio(BIO* bio, char* bytes, int size) {
  const OpenSslFunctions& ssl = OpenSsl();
  auto& self = *static_cast<TlsConnection*>(ssl.BIO_get_data(bio));
  ssl.BIO_clear_flags(bio, BIO_FLAGS_RWS | BIO_FLAGS_SHOULD_RETRY);
  asio::error_code error;
  const std::size_t count =
      self.socket_.read_some(asio::buffer(bytes, static_cast<std::size_t>(size)), error);
  if (!error) return static_cast<int>(count);
  if (error == asio::error::would_block || error == asio::error::interrupted) {
    ssl.BIO_set_flags(bio, BIO_FLAGS_READ | BIO_FLAGS_SHOULD_RETRY);
  } else {
    self.socketError_ = error;
  }
  return error == asio::error::eof ? 0 : -1;
}

int TlsConnection::writeBio(BIO* bio, const char* bytes, int size) {
  const OpenSslFunctions& ssl = OpenSsl();
  auto& self = *static_cast<TlsConnection*>(ssl.BIO_get_data(bio));
  ssl.BIO_clear_flags(bio, BIO_FLAGS_RWS | BIO_FLAGS_SHOULD_RETRY);
  asio::error_code error;
  const std::size_t count =
      self.socket_.write_some(asio::buffer(bytes, static_cast<std::size_t>(size)), error);
  if (!error) return static_cast<int>(count);
  if (error == asio::error::would_block || error == asio::error::interrupted) {
    ssl.BIO_set_flags(bio, BIO_FLAGS_WRITE | BIO_FLAGS_SHOULD_RETRY);
  } else {
    self.socketError_ = error;
  }
  return -1;
}

long TlsConnection::controlBio(BIO* bio, int command, long, void*) {
  const auto& self = *static_cast<TlsConnection*>(OpenSsl().BIO_get_data(bio));
  if (command == BIO_CTRL_FLUSH) return 1;
  return command == BIO_CTRL_EOF && self.socketError_ == asio::error::eof ? 1 : 0;
}

asio::error_code TlsConnection::fail(asio::error_code error, std::string problem) {
  failure_ = error;
  problem_ = std::move(problem);
  return failure_;
}

/// Runs an operation of the library, which returns 1 for success.
template <class Operation>
asio::error_code TlsConnection::attempt(Operation operation) {
  const OpenSslFunctions& ssl = OpenSsl();
  ssl.ERR_clear_error();
  waitsToWrite_ = false;
  const int result = operation();
  if (result == 1) return {};
  switch (ssl.SSL_get_error(ssl_, result)) {
    case SSL_ERROR_WANT_WRITE:
      waitsToWrite_ = true;
      return asio::error::would_block;
    case SSL_ERROR_WANT_READ:
      return asio::error::would_block;
    case SSL_ERROR_ZERO_RETURN:
      return asio::error::eof;
    default:
      break;
  }
  if (socketError_ && socketError_ != asio::error::eof) return fail(socketError_, "the connection broke");
  return fail(kFailed, socketError_ ? "the connection was cut off" : libraryError());
}

asio::error_code TlsConnection::handshake() {
  if (failure_ || established_) return failure_;
  if (const auto error = attempt([this] { return OpenSsl().SSL_do_handshake(ssl_); })) return error;
  established_ = true;
  return checkCertificate();
}

asio::error_code TlsConnection::checkCertificate() {
  const OpenSslFunctions& ssl = OpenSsl();
  X509* const shown = ssl.SSL_get0_peer_certificate(ssl_);
  if (!shown) return fail(kFailed, "the server shows no certificate");
  if (login_.certificate_) {
    // A resumed session is the first connection's own, certificate included.
    if (ssl.SSL_session_reused(ssl_) == 1 ||
        ReadTlsCertificate(shown).fingerprint == login_.certificate_->fingerprint)
      return {};
    return fail(kWrongCertificate,
                "the data connection shows another certificate than the control connection");
  }
  TlsCertificate& certificate = login_.certificate_.emplace(ReadTlsCertificate(shown));
  login_.cipher_ = std::string(ssl.SSL_get_version(ssl_)) + ", " +
                   ssl.SSL_CIPHER_get_name(ssl.SSL_get_current_cipher(ssl_));
  login_.groups_ = groupsStartingWith(ssl.SSL_ctrl(ssl_, SSL_CTRL_GET_NEGOTIATED_GROUP, 0, nullptr));
  const long verdict = ssl.SSL_get_verify_result(ssl_);
  if (verdict == X509_V_OK) return {};
  certificate.problem = ssl.X509_verify_cert_error_string(verdict);
  if (!login_.accepted_.empty() && certificate.fingerprint == login_.accepted_) return {};
  return fail(kWrongCertificate, certificate.problem);
}

/// The library returns one record of at most 16 KiB at a time; what has arrived is collected.
std::size_t TlsConnection::read(char* bytes, std::size_t most, asio::error_code& error) {
  std::size_t all = 0;
  error = handshake();
  while (!error && all < most) {
    std::size_t count = 0;
    error = attempt([&] { return OpenSsl().SSL_read_ex(ssl_, bytes + all, most - all, &count); });
    all += count;
  }
  drained_ = error == asio::error::would_block;
  if (all != 0) error = {};  // it shows again at the next read
  return all;
}

std::size_t TlsConnection::write(std::string_view bytes, asio::error_code& error) {
  std::size_t count = 0;
  error = handshake();
  if (!error)
    error = attempt([&] { return OpenSsl().SSL_write_ex(ssl_, bytes.data(), bytes.size(), &count); });
  return count;
}
}  // namespace quillmoor
