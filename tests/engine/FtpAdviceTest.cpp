#include "engine/FtpAdvice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace quillmoor {
namespace {

using ::testing::HasSubstr;

TEST(FtpAdvice, IsGivenForAFullServerAndForOneThatWantsEncryption) {
  const char* const full[] = {
      "421 Too many connections (8) from this IP",
      "421 50 users (the maximum) are already logged in, sorry",
      "421 There are too many connected users, please try later.",
      "421 There are too many connections from your internet address.",
      "530 Sorry, the maximum number of clients (3) from your host are already connected.",
      "421 Maximum session limit reached. Try again in 5 minutes.",
      "530 Only 2 simultaneous logins allowed.",
      "530-Welcome\r\n530 Max clients reached"};
  const char* const encrypted[] = {
      "530 Non-anonymous sessions must use encryption.",
      "421 Sorry, cleartext sessions and weak ciphers are not accepted on this server.",
      "550 SSL/TLS required on the control channel",
      "534 Policy requires SSL.",
      "522 TLS is required before USER",
      "530 Please use AUTH TLS first; maximum 5 connections.",
      "530 This server only accepts FTPS logins"};
  const char* const neither[] = {"530 Login incorrect.",
                                 "530 Login incorrect. TLS session established.",
                                 "530 Too many failed login attempts from your connection",
                                 "530 User cannot log in, home directory inaccessible.",
                                 "530 Please login with USER and PASS.",
                                 "421 Idle timeout: the connection has reached its limit",
                                 "421 Service not available.",
                                 "534 Request denied.",
                                 "550 Too many users"};
  const auto advice = [](const char* reply, const char* what = "refused the user name") {
    return LoginAdvice(std::stoi(reply), std::string("The server ") + what + ": " + reply);
  };
  for (const char* reply : full) EXPECT_THAT(advice(reply), HasSubstr("takes no more connections")) << reply;
  for (const char* reply : encrypted) EXPECT_THAT(advice(reply), HasSubstr("without encryption")) << reply;
  for (const char* reply : neither) EXPECT_EQ(advice(reply), "") << reply;
  EXPECT_EQ(advice("550 must-use-tls.txt: No such file", "refused RETR"), "");
  EXPECT_EQ(advice("421 Out of memory.", "closed the session with too many connections"), "");
  EXPECT_EQ(LoginAdvice(1006, "The server did not answer in time."), "");
}

}  // namespace
}  // namespace quillmoor
