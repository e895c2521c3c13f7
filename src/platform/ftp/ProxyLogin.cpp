#include "platform/ftp/ProxyLogin.h"

#include <algorithm>
#include <array>

namespace quillmoor {
namespace {

using std::chrono::milliseconds;

/// The steps of a login. `none` pads the table.
enum class Step {
  none,
  proxyLogin,  // USER and PASS of the proxy
  site,        // SITE host
  open,        // OPEN host
  login,       // USER and PASS of the server
  loginAt      // USER user@host, interpreted by the proxy, and PASS of the server
};

struct Style {
  FtpProxyType proxy;
  const char* greeter;
  std::array<Step, 3> steps;
};
constexpr std::array<Style, 8> kStyles = {{
    {FtpProxyType::none, kServer, {Step::login}},
    {FtpProxyType::socks4, kServer, {Step::login}},
    {FtpProxyType::socks5, kServer, {Step::login}},
    {FtpProxyType::siteHostname, kProxy, {Step::proxyLogin, Step::site, Step::login}},
    {FtpProxyType::userLogon, kProxy, {Step::proxyLogin, Step::loginAt}},
    {FtpProxyType::userNoLogon, kProxy, {Step::loginAt}},
    {FtpProxyType::open, kProxy, {Step::proxyLogin, Step::open, Step::login}},
    // The proxy has connected to the server before the first reply.
    {FtpProxyType::pipe, kServer, {Step::login}},
}};

// A server's greeting may arrive after the proxy's reply; the maximum number of them.
constexpr int kMostGreetings = 3;
constexpr std::uint16_t kFtpPort = 21;

/// RFC 959 §5.4: the codes with which a server refuses USER, PASS or ACCT.
constexpr std::array<int, 5> kLoginRefusals = {421, 500, 501, 503, 530};

class Login {
 public:
  Login(FtpControl& control, const FtpLogin& login, milliseconds timeout,
        const std::function<void(const FtpReply&)>& show)
      : control_(control),
        login_(login),
        timeout_(timeout),
        show_(show),
        style_(*std::find_if(kStyles.begin(), kStyles.end(),
                             [&](const Style& entry) { return entry.proxy == login.proxy.type; })),
        greetedByProxy_(style_.greeter == kProxy) {}

  void begin() {
    control_.setPeer(style_.greeter);
    if (login_.security == FtpSecurity::implicitTls) encrypt();
    readGreeting();
    if (login_.security != FtpSecurity::explicitTls) return;
    const FtpReply reply = control_.exchange("AUTH TLS", timeout_);
    if (!reply.completion()) refuse("does not encrypt (AUTH TLS), so nothing else was sent", reply);
    show_(reply);
    encrypt();
  }

  FtpReply run() {
    begin();
    // Some servers take this only after the login.
    const bool protects = !control_.tls() || !protectData();
    FtpReply reply;
    for (const Step step : style_.steps) {
      if (step != Step::none) reply = perform(step);
    }
    if (!protects) {
      if (const auto refusal = protectData()) refuse("does not encrypt data connections", *refusal);
    }
    if (greetedByProxy_) control_.setPeer(kServerOrProxy);
    return reply;
  }

 private:
  void encrypt() {
    control_.startTls(login_.server.host, login_.certificate, timeout_);
    show_({0, "Encrypted: " + control_.tls()->cipher()});
  }

  /// RFC 4217 §9: every data connection is to be encrypted. Returns the reply of a server that refuses.
  std::optional<FtpReply> protectData() {
    for (const char* const line : {"PBSZ 0", "PROT P"}) {
      const FtpReply reply = control_.exchange(line, timeout_);
      if (!reply.completion()) return reply;
      show_(reply);
    }
    return std::nullopt;
  }

  FtpReply perform(Step step) {
    switch (step) {
      case Step::none:
        break;
      case Step::proxyLogin: {
        if (login_.proxy.userName.empty()) break;
        show_(userAndPassword(login_.proxy.userName, login_.proxy.password, kProxy, kProxy));
        break;
      }
      // As in the classic client's OPEN, the port follows a space.
      case Step::site:
        requestServer("SITE " + login_.server.host + port(" "));
        break;
      case Step::open:
        requestServer("OPEN " + login_.server.host + port(" "));
        break;
      case Step::login:
        return userAndPassword(login_.userName, login_.password, kServer, kServer);
      case Step::loginAt:
        return userAndPassword(login_.userName + "@" + hostAndPort(), login_.password, kProxy, kServer);
    }
    return {};
  }

  void readGreeting() {
    const auto deadline = std::chrono::steady_clock::now() + timeout_;
    FtpReply reply = control_.readReply(deadline);
    while (reply.preliminary()) {  // 120: ready in so many minutes
      show_(reply);
      reply = control_.readReply(deadline);
    }
    if (!reply.completion()) refuse("refused the connection", reply);
    show_(reply);
  }

  void requestServer(const std::string& line) {
    const FtpReply reply = control_.exchange(line, timeout_);
    if (reply.refusal()) {
      refuse("did not connect to " + login_.server.host + " (" + line.substr(0, line.find(' ')) + ")", reply);
    }
    show_(reply);
  }

  /// USER, then PASS and ACCT if asked for. `first` answers USER, `rest` the others.
  FtpReply userAndPassword(const std::string& userName, const std::string& password, const char* first,
                           const char* rest) {
    control_.setPeer(first);
    FtpReply reply = control_.exchange("USER " + userName, timeout_);
    // Not the reply to USER, but the greeting of the server that the proxy has connected to meanwhile.
    for (int passed = 0; greetedByProxy_ && reply.code == 220 && passed < kMostGreetings; ++passed) {
      show_(reply);
      reply = control_.readFinalReply(std::chrono::steady_clock::now() + timeout_);
    }
    if (reply.refusal()) refuse("refused the user name", reply);
    if (greetedByProxy_ && reply.code == 220) refuse("did not answer the user name", reply);
    control_.setPeer(rest);
    if (reply.code == 331) reply = answered("PASS " + password, "the password");
    if (reply.code == 332) {
      if (login_.account.empty()) {
        refuse("asks for an account (ACCT), and the profile has none", reply);
      }
      reply = answered("ACCT " + login_.account, "the account");
      if (reply.code == 331) reply = answered("PASS " + password, "the password");
    }
    if (!reply.completion()) refuse("did not complete the login", reply);
    return reply;
  }

  FtpReply answered(const std::string& line, const char* what) {
    FtpReply reply = control_.exchange(line, timeout_);
    if (reply.refusal()) refuse(std::string("refused ") + what, reply);
    return reply;
  }

  [[noreturn]] void refuse(const std::string& what, const FtpReply& reply) {
    // A proxy that fails may reply in the server's place, with 425 or 550 for example; but some servers use
    // these, too.
    const bool loginRefusal =
        std::find(kLoginRefusals.begin(), kLoginRefusals.end(), reply.code) != kLoginRefusals.end();
    if (greetedByProxy_ && control_.peer() == kServer && reply.refusal() && !loginRefusal)
      control_.setPeer(kServerOrProxy);
    throw FtpRefusal("The " + control_.peer() + " " + what + ": " + describeReply(control_.peer(), reply),
                     reply);
  }

  std::string port(const char* separator) const {
    return login_.server.port == kFtpPort ? "" : separator + std::to_string(login_.server.port);
  }

  /// An IPv6 address is put in brackets: its colons would be taken for the port's.
  std::string hostAndPort() const {
    const bool brackets = login_.server.host.find(':') != std::string::npos;
    return (brackets ? "[" + login_.server.host + "]" : login_.server.host) + port(":");
  }

  FtpControl& control_;
  const FtpLogin& login_;
  milliseconds timeout_;
  const std::function<void(const FtpReply&)>& show_;
  const Style& style_;
  bool greetedByProxy_;
};

}  // namespace

void beginSession(FtpControl& control, const FtpLogin& login, milliseconds timeout,
                  const std::function<void(const FtpReply&)>& show) {
  Login(control, login, timeout, show).begin();
}

FtpReply logInAtServer(FtpControl& control, const FtpLogin& login, milliseconds timeout,
                       const std::function<void(const FtpReply&)>& show) {
  return Login(control, login, timeout, show).run();
}

}  // namespace quillmoor
