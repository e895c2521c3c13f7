#include "platform/net/SocksProxy.h"

#include <algorithm>
#include <array>

#include "platform/system/ErrorText.h"

namespace quillmoor {
namespace {

constexpr std::size_t kLongestText = 255;
constexpr char kNoLogin = '\x00', kUserAndPassword = '\x02';
enum class AddressType : std::uint8_t { ipv4 = 1, name = 3, ipv6 = 4 };

struct Meaning {
  std::uint8_t code;
  const char* words;  // follows "the proxy says that"
};
constexpr std::uint8_t kGranted4 = 0x5A;
constexpr std::array<Meaning, 3> kRefusals4 = {{
    {0x5B, "it rejects the request or could not fulfil it"},
    {0x5C, "it cannot ask this computer for its user (ident)"},
    {0x5D, "this computer names another user than the profile (ident)"},
}};
constexpr std::array<Meaning, 8> kRefusals5 = {{
    {1, "it failed, without saying why"},
    {2, "its rules do not allow this connection"},
    {3, "the network cannot be reached"},
    {4, "the host cannot be reached or is not known"},
    {5, "the host refuses the connection"},
    {6, "the route to the host is too long (TTL expired)"},
    {7, "it does not support this kind of request"},
    {8, "it does not support this kind of address"},
}};

template <std::size_t N>
[[noreturn]] void raiseRefusal(const std::array<Meaning, N>& table, std::uint8_t code) {
  const auto at =
      std::find_if(table.begin(), table.end(), [=](const Meaning& entry) { return entry.code == code; });
  throw NetError(
      NetFailure::refused,
      "the proxy says that " +
          (at != table.end() ? std::string(at->words) : "it refuses (code " + std::to_string(code) + ")"));
}

std::uint8_t byteAt(std::string_view bytes, std::size_t at) {
  return static_cast<std::uint8_t>(bytes[at]);
}

void appendPort(std::string& message, std::uint16_t port) {
  message += static_cast<char>(port >> 8);
  message += static_cast<char>(port & 0xFF);
}

std::uint16_t portAt(std::string_view bytes, std::size_t at) {
  return static_cast<std::uint16_t>(byteAt(bytes, at) << 8 | byteAt(bytes, at + 1));
}

template <class Bytes>
void appendBytes(std::string& message, const Bytes& bytes) {
  for (const unsigned char byte : bytes) message += static_cast<char>(byte);
}

template <class Address>
std::string addressAt(std::string_view bytes, std::size_t at) {
  typename Address::bytes_type raw;
  for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = byteAt(bytes, at + i);
  return Address(raw).to_string();
}

const std::string& checked(const std::string& text, const char* what) {
  if (text.size() > kLongestText) {
    throw NetError(NetFailure::badArgument, std::string("the ") + what + " is too long for a SOCKS proxy");
  }
  return text;
}

void appendCounted(std::string& message, const std::string& text, const char* what) {
  message += static_cast<char>(checked(text, what).size());
  message += text;
}

void appendTerminated(std::string& message, const std::string& text, const char* what) {
  if (text.find('\0') != std::string::npos) {
    throw NetError(NetFailure::badArgument, std::string("the ") + what + " contains a zero byte");
  }
  message += checked(text, what);
  message += '\0';
}

/// SOCKS 4a: the invalid address 0.0.0.x means that the host name follows the user name.
std::string request4(SocksCommand command, const SocksLogin& login, const SocksAddress& target) {
  std::string message = {'\x04', static_cast<char>(command)};
  appendPort(message, target.port);
  asio::error_code isName;
  const auto address = asio::ip::make_address(target.host, isName);
  if (!isName && address.is_v6()) {
    throw NetError(NetFailure::badArgument, "a SOCKS 4 proxy does not support IPv6 addresses");
  }
  appendBytes(message, isName ? asio::ip::address_v4::bytes_type{{0, 0, 0, 1}} : address.to_v4().to_bytes());
  appendTerminated(message, login.userName, "proxy's user name");
  if (isName) appendTerminated(message, target.host, "host name");
  return message;
}

/// RFC 1928 §4.
std::string request5(SocksCommand command, const SocksAddress& target) {
  std::string message = {'\x05', static_cast<char>(command), '\0'};
  asio::error_code isName;
  const auto address = asio::ip::make_address(target.host, isName);
  if (isName) {
    message += static_cast<char>(AddressType::name);
    appendCounted(message, target.host, "host name");
  } else if (address.is_v4()) {
    message += static_cast<char>(AddressType::ipv4);
    appendBytes(message, address.to_v4().to_bytes());
  } else {
    message += static_cast<char>(AddressType::ipv6);
    appendBytes(message, address.to_v6().to_bytes());
  }
  appendPort(message, target.port);
  return message;
}

[[noreturn]] void raiseNoProxy(SocksVersion version) {
  throw NetError(NetFailure::badReply,
                 "the other end is not a SOCKS " + std::to_string(static_cast<int>(version)) + " proxy");
}

// Lengths of the parts before and after the address of a reply.
constexpr std::size_t kReply4 = 8, kHead5 = 4, kPort = 2;

}  // namespace

std::string socksGreeting(const SocksLogin& login) {
  if (login.userName.empty()) return {'\x05', '\x01', kNoLogin};
  return {'\x05', '\x02', kNoLogin, kUserAndPassword};
}

std::string socksPassword(const SocksLogin& login) {
  std::string message = "\x01";
  appendCounted(message, login.userName, "proxy's user name");
  appendCounted(message, login.password, "proxy's password");
  return message;
}

std::string socksRequest(SocksCommand command, const SocksLogin& login, const SocksAddress& address) {
  return login.version == SocksVersion::v4 ? request4(command, login, address) : request5(command, address);
}

std::size_t socksReplyLength(SocksVersion version, std::string_view begun) {
  if (version == SocksVersion::v4) {
    // Zero, but some proxies repeat the 4 of the request.
    if (!begun.empty() && begun[0] != '\x00' && begun[0] != '\x04') raiseNoProxy(version);
    return kReply4;
  }
  if (!begun.empty() && begun[0] != '\x05') raiseNoProxy(version);
  if (begun.size() < 2) return 2;
  if (begun[1] != 0) return begun.size();  // some proxies close the connection after a refusal's code
  if (begun.size() <= kHead5) return kHead5 + 1;
  switch (static_cast<AddressType>(begun[3])) {
    case AddressType::ipv4:
      return kHead5 + 4 + kPort;
    case AddressType::ipv6:
      return kHead5 + 16 + kPort;
    case AddressType::name:
      return kHead5 + 1 + byteAt(begun, kHead5) + kPort;
  }
  raiseNoProxy(version);
}

SocksAddress socksReplyAddress(SocksVersion version, std::string_view reply) {
  if (version == SocksVersion::v4) {
    if (byteAt(reply, 1) != kGranted4) raiseRefusal(kRefusals4, byteAt(reply, 1));
    return {addressAt<asio::ip::address_v4>(reply, 4), portAt(reply, 2)};
  }
  if (reply[1] != 0) raiseRefusal(kRefusals5, byteAt(reply, 1));
  SocksAddress address;
  switch (static_cast<AddressType>(reply[3])) {
    case AddressType::ipv4:
      address.host = addressAt<asio::ip::address_v4>(reply, kHead5);
      break;
    case AddressType::ipv6:
      address.host = addressAt<asio::ip::address_v6>(reply, kHead5);
      break;
    case AddressType::name:
      address.host = reply.substr(kHead5 + 1, byteAt(reply, kHead5));
      break;
  }
  address.port = portAt(reply, reply.size() - kPort);
  return address;
}

namespace {

/// One dialogue: messages are sent whole, replies read up to their last byte and no further.
class Conversation {
 public:
  Conversation(PumpedIo& io, TcpChannel& channel, Deadline deadline)
      : io_(io), channel_(channel), deadline_(deadline) {}

  void send(const std::string& message) { check(writeAll(io_, channel_, message, deadline_)); }

  /// Reads two bytes, the first of which must be `first`; returns the second.
  char shortAnswer(char first) {
    const std::string answer = read([=](std::string_view begun) {
      if (!begun.empty() && begun[0] != first) raiseNoProxy(SocksVersion::v5);
      return std::size_t{2};
    });
    return answer[1];
  }

  SocksAddress reply(SocksVersion version) {
    return socksReplyAddress(version,
                             read([=](std::string_view begun) { return socksReplyLength(version, begun); }));
  }

 private:
  template <class Length>
  std::string read(Length length) {
    std::string answer;
    for (std::size_t whole = length(answer); answer.size() < whole; whole = length(answer)) {
      std::array<char, kLongestText + 16> bytes;
      std::size_t size = 0;
      check(readSome(io_, channel_, bytes.data(), whole - answer.size(), size, deadline_));
      answer.append(bytes.data(), size);
    }
    return answer;
  }

  static void check(const asio::error_code& error) {
    if (!error) return;
    if (error == asio::error::timed_out) {
      throw NetError(NetFailure::timedOut, "the proxy did not answer in time");
    }
    throw NetError(NetFailure::connectionLost,
                   error == asio::error::eof ? "the proxy closed the connection"
                                             : "the connection to the proxy is lost: " + ErrorText(error));
  }

  PumpedIo& io_;
  TcpChannel& channel_;
  Deadline deadline_;
};

/// RFC 1928 §3, RFC 1929 §2.
void logInAtProxy(Conversation& proxy, const SocksLogin& login) {
  if (login.version == SocksVersion::v4) return;
  proxy.send(socksGreeting(login));
  const char method = proxy.shortAnswer('\x05');
  if (method == kNoLogin) return;
  if (method != kUserAndPassword || login.userName.empty()) {
    throw NetError(NetFailure::refused,
                   login.userName.empty()
                       ? "the proxy says that it requires a login, and the profile has no user name for it"
                       : "the proxy says that it accepts neither a user name and password nor a connection "
                         "without them");
  }
  proxy.send(socksPassword(login));
  if (proxy.shortAnswer('\x01') != 0) {
    throw NetError(NetFailure::refused, "the proxy says that its user name or password is wrong");
  }
}

}  // namespace

void socksConnect(PumpedIo& io, TcpChannel& channel, const SocksLogin& login, const SocksAddress& target,
                  Deadline deadline) {
  const std::string request = socksRequest(SocksCommand::connect, login, target);
  Conversation proxy(io, channel, deadline);
  logInAtProxy(proxy, login);
  proxy.send(request);
  proxy.reply(login.version);
}

SocksAddress socksBind(PumpedIo& io, TcpChannel& channel, const SocksLogin& login, const SocksAddress& peer,
                       Deadline deadline) {
  const std::string request = socksRequest(SocksCommand::bind, login, peer);
  Conversation proxy(io, channel, deadline);
  logInAtProxy(proxy, login);
  proxy.send(request);
  SocksAddress waiting = proxy.reply(login.version);
  asio::error_code isName;
  const auto address = asio::ip::make_address(waiting.host, isName);
  if (isName || waiting.port == 0) {
    throw NetError(NetFailure::badReply, "the proxy does not say where it waits for the server");
  }
  if (address.is_unspecified()) {
    asio::error_code ignored;
    waiting.host = channel.socket.remote_endpoint(ignored).address().to_string();
  }
  return waiting;
}

std::optional<SocksAddress> pollSocksPeer(TcpChannel& channel, SocksVersion version, std::string& begun) {
  channel.consumeReadiness();
  for (std::size_t whole = socksReplyLength(version, begun); begun.size() < whole;
       whole = socksReplyLength(version, begun)) {
    std::array<char, kLongestText + 16> bytes;
    asio::error_code error;
    const std::size_t size =
        channel.socket.read_some(asio::buffer(bytes.data(), whole - begun.size()), error);
    if (error == asio::error::would_block || error == asio::error::interrupted) return std::nullopt;
    if (error) throw NetError(NetFailure::connectionLost, "the proxy closed the connection");
    begun.append(bytes.data(), size);
  }
  return socksReplyAddress(version, begun);
}

}  // namespace quillmoor
