#include "platform/ftp/ProxyLogin.h"

#include <algorithm>
#include <array>

namespace quillmoor {
namespace {

using std::chrono::milliseconds;

/// What a login consists of. `none` fills the table up.
enum class Step {
  none,
  proxyLogin,  // USER and PASS of the proxy
  site,        // SITE host
  open,        // OPEN host
  login,       // USER and PASS of the server
  loginAt      // USER user@host, which the proxy reads, and PASS of the server
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
    // The proxy has led to the server before a word was said.
    {FtpProxyType::pipe, kServer, {Step::login}},
}};

// A server's greeting may arrive behind the proxy's answer; so many may.
constexpr int kMostGreetings = 3;
constexpr std::uint16_t kFtpPort = 21;

/// RFC 959 §5.4: with these a server refuses USER, PASS or ACCT.
constexpr std::array<int, 5> kLoginRefusals = {421, 500, 501, 503, 530};

class Login {
 public:
  Login(FtpControl& control, const FtpLogin& login, milliseconds timeout,
        const std::function<void(const FtpReply&)>& show)
      : control_(control), login_(login), timeout_(timeout), show_(show) {}

  FtpReply run() {
    const Style& style = *std::find_if(kStyles.begin(), kStyles.end(),
                                       [&](const Style& entry) { return entry.proxy == login_.proxy.type; });
    control_.setSpeaker(style.greeter);
    greetedByProxy_ = style.greeter == kProxy;
    takeGreeting();
    FtpReply reply;
    for (const Step step : style.steps) {
      if (step != Step::none) reply = take(step);
    }
    if (greetedByProxy_) control_.setSpeaker(kServerOrProxy);
    return reply;
  }

 private:
  FtpReply take(Step step) {
    switch (step) {
      case Step::none:
        break;
      case Step::proxyLogin: {
        if (login_.proxy.userName.empty()) break;
        show_(userAndPassword(login_.proxy.userName, login_.proxy.password, kProxy, kProxy));
        break;
      }
      // As the classic client's OPEN: the port behind a blank.
      case Step::site:
        askForServer("SITE " + login_.server.host + port(" "));
        break;
      case Step::open:
        askForServer("OPEN " + login_.server.host + port(" "));
        break;
      case Step::login:
        return userAndPassword(login_.userName, login_.password, kServer, kServer);
      case Step::loginAt:
        return userAndPassword(login_.userName + "@" + hostAndPort(), login_.password, kProxy, kServer);
    }
    return {};
  }

  void takeGreeting() {
    const auto deadline = std::chrono::steady_clock::now() + timeout_;
    FtpReply reply = control_.readReply(deadline);
    while (reply.preliminary()) {  // 120: ready in so many minutes
      show_(reply);
      reply = control_.readReply(deadline);
    }
    if (!reply.completion()) refuse("does not want to talk", reply);
    show_(reply);
  }

  void askForServer(const std::string& line) {
    const FtpReply reply = control_.exchange(line, timeout_);
    if (reply.refusal()) {
      refuse("did not connect to " + login_.server.host + " (" + line.substr(0, line.find(' ')) + ")", reply);
    }
    show_(reply);
  }

  /// USER, then PASS and ACCT as far as they are asked for, with who answers the first and the rest.
  FtpReply userAndPassword(const std::string& userName, const std::string& password, const char* first,
                           const char* rest) {
    control_.setSpeaker(first);
    FtpReply reply = control_.exchange("USER " + userName, timeout_);
    // No answer to USER, but the greeting of the server that the proxy has reached meanwhile.
    for (int passed = 0; greetedByProxy_ && reply.code == 220 && passed < kMostGreetings; ++passed) {
      show_(reply);
      reply = control_.readFinalReply(std::chrono::steady_clock::now() + timeout_);
    }
    if (reply.refusal()) refuse("refused the user name", reply);
    if (greetedByProxy_ && reply.code == 220) refuse("did not answer the user name", reply);
    control_.setSpeaker(rest);
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
    // A proxy that cannot go on may answer in the server's place, by 425 or 550 for example; but servers are
    // known to use these as well.
    const bool loginRefusal =
        std::find(kLoginRefusals.begin(), kLoginRefusals.end(), reply.code) != kLoginRefusals.end();
    if (greetedByProxy_ && control_.speaker() == kServer && reply.refusal() && !loginRefusal)
      control_.setSpeaker(kServerOrProxy);
    throw FtpRefusal("The " + control_.speaker() + " " + what + ": " + saidBy(control_.speaker(), reply),
                     reply);
  }

  std::string port(const char* separator) const {
    return login_.server.port == kFtpPort ? "" : separator + std::to_string(login_.server.port);
  }

  /// An IPv6 address in brackets: its colons would be taken for the port's.
  std::string hostAndPort() const {
    const bool brackets = login_.server.host.find(':') != std::string::npos;
    return (brackets ? "[" + login_.server.host + "]" : login_.server.host) + port(":");
  }

  FtpControl& control_;
  const FtpLogin& login_;
  milliseconds timeout_;
  const std::function<void(const FtpReply&)>& show_;
  bool greetedByProxy_ = false;
};

}  // namespace

FtpReply logInAtServer(FtpControl& control, const FtpLogin& login, milliseconds timeout,
                       const std::function<void(const FtpReply&)>& show) {
  return Login(control, login, timeout, show).run();
}

}  // namespace quillmoor
