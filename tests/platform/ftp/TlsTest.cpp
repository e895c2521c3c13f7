// Encrypted sessions of the FTP client, and servers that are up to something.
#include "platform/ftp/FtpClientFixture.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class TlsTest : public FtpClientTest {
 protected:
  TlsTest() {
    server.offerTls();
    server.addFile("/a.bin", std::string(100'000, 'a'));
    client.security = static_cast<std::int32_t>(FtpSecurity::explicitTls);
    client.certificate = server.fingerprint();
  }

  int numberOfLogin() {
    return numberOf([&] { login(); });
  }
  int numberOfGet() {
    return numberOf([&] { client.getFile("/a.bin", (folder / "a.bin").string()); });
  }
};

TEST_F(TlsTest, EncryptsBeforeTheUserNameAndShowsHow) {
  login();
  EXPECT_THAT(server.commands(), ElementsAre("AUTH TLS", "PBSZ 0", "PROT P", "USER joe", "PASS hunter22",
                                             "FEAT", "OPTS UTF8 ON"));
  EXPECT_THAT(shownTexts(), HasSubstr("Encrypted: TLSv1.3, TLS_"));
}

TEST_F(TlsTest, GoesOnOnlyWithAnEncryptedConnection) {
  const struct {
    const char* name;
    ScriptedFtpServer::Action auth;
    int error;
  } cases[] = {
      {"refused", replies("502 Not here."), 502},
      {"half a handshake",
       [](Session& s) {
         s.reply("234 Begin.");
         s.waitForClient();
         s.drop();
       },
       number(FtpErrorNumber::tlsFailed)},
      {"no handshake",
       [](Session& s) {
         s.reply("234 Begin.");
         s.waitForClient();
         s.reply("220 I speak no TLS.");
         s.waitForClient();
       },
       number(FtpErrorNumber::tlsFailed)},
  };
  for (const auto& c : cases) {
    server.once("AUTH", c.auth);
    EXPECT_EQ(numberOfLogin(), c.error) << c.name;
    EXPECT_EQ(client.state(), FtpState::closed) << c.name;
  }
  EXPECT_EQ(server.count("USER"), 0u);
  client.proxyType = static_cast<std::int32_t>(FtpProxyType::open);
  client.proxyHost = "127.0.0.1";
  client.proxyPort = server.port();
  const std::size_t before = server.commands().size();
  EXPECT_EQ(numberOfLogin(), number(FtpErrorNumber::badArgument));
  EXPECT_EQ(server.commands().size(), before);
}

TEST_F(TlsTest, DiscardsWhatCameBeforeTheHandshake) {
  server.on("AUTH", [](Session& s) {
    s.sendControl("234 Begin.\r\n230 You are in.\r\n230 You are in.\r\n");
    s.startTls();
  });
  login();
  EXPECT_EQ(server.count("PASS"), 1u);
}

TEST_F(TlsTest, AcceptsOnlyTheCertificateOfTheProfile) {
  for (const std::string& accepted : {std::string(), std::string(64, 'b')}) {
    client.certificate = accepted;
    const FtpError error = errorOf([&] { login(); });
    EXPECT_EQ(error.number(), number(FtpErrorNumber::certificateRejected));
    EXPECT_THAT(error.what(), HasSubstr(server.fingerprint()));
    ASSERT_TRUE(client.rejectedCertificate());
    EXPECT_EQ(client.rejectedCertificate()->fingerprint, server.fingerprint());
    EXPECT_EQ(client.rejectedCertificate()->subject, "CN=localhost");
  }
  EXPECT_EQ(server.count("USER"), 0u);
  EXPECT_EQ(client.readCertificate("127.0.0.1", server.port()).fingerprint, server.fingerprint());
  EXPECT_EQ(server.count("USER"), 0u);
}

TEST_F(TlsTest, RefusesAnotherCertificateOnTheDataConnection) {
  login();
  server.on("EPSV", [](Session& s) {
    s.changeCertificate();
    s.answerAsUsual();
  });
  EXPECT_EQ(numberOfGet(), number(FtpErrorNumber::certificateRejected));
  EXPECT_EQ(client.state(), FtpState::closed);
}

TEST_F(TlsTest, ResumesTheNewestSessionOnEveryDataConnection) {
  for (const bool version13 : {true, false}) {
    ScriptedFtpServer other;
    other.offerTls(version13);
    other.addFile("/a.bin", std::string(100'000, 'a'));
    int resumed = 0;
    const auto count = [&](Session& s) {
      s.answerAsUsual();
      resumed += s.resumedData();
    };
    other.on("RETR", count);
    other.on("LIST", count);
    client.certificate = other.fingerprint();
    client.login("127.0.0.1", "joe", "x", "", other.port());
    client.command("TYPE I");
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(client.list().text.find("a.bin") != std::string::npos, true);
      EXPECT_EQ(numberOfGet(), 0);
    }
    EXPECT_EQ(resumed, 6) << version13;
    client.abort();
  }
}

TEST_F(TlsTest, BeginsAnewAfterAServerThatWantsASessionResumed) {
  login();
  for (const char* refusal : {"522 Session reuse required.", "425 Cannot build the data connection."}) {
    server.once("RETR", [&](Session& s) {
      s.openData();
      s.cutData();
      s.reply(refusal);
    });
    EXPECT_EQ(numberOfGet(), std::stoi(refusal));
    EXPECT_EQ(client.state(), FtpState::closed);
    login();
    EXPECT_EQ(numberOfGet(), 0);
  }
}

TEST_F(TlsTest, TakesAFileForCompleteOnlyWithTheClosingMessage) {
  login();
  client.command("TYPE I");
  ASSERT_EQ(numberOfGet(), 0);
  server.on("RETR", [](Session& s) {
    s.openData();
    s.reply("150 Here.");
    s.sendData(std::string(100'000, 'b'));
    s.cutData();
    s.reply("226 Sent.");
  });
  EXPECT_EQ(numberOfGet(), number(FtpErrorNumber::incomplete));
  EXPECT_EQ(contentsOf((folder / "a.bin").string()), std::string(100'000, 'a'));
  EXPECT_EQ(client.currentRemoteDirectory(), "/") << "the session goes on";
}

TEST_F(TlsTest, SendsTheNextFilesCommandsAtTheEndOfData) {
  login();
  client.command("TYPE I");
  ASSERT_EQ(numberOfGet(), 0);
  EXPECT_TRUE(client.sendAhead({"TYPE I"}, true)) << "the guess was right";
  client.command("TYPE I");
  ASSERT_EQ(numberOfGet(), 0);
  EXPECT_TRUE(client.sendAhead({"TYPE A", "PWD"}, false)) << "the guess was wrong";
  client.command("TYPE A");
  EXPECT_EQ(client.currentRemoteDirectory(), "/");
  EXPECT_TRUE(client.asciiType());
  EXPECT_THAT(client.list().text, HasSubstr("a.bin"));
  EXPECT_EQ(server.count("EPSV"), 4u) << "the second guess was of no use";
}

TEST_F(TlsTest, DoesNotNegotiateAgain) {
  ScriptedFtpServer other;
  other.offerTls(false);
  other.on("PWD", [](Session& s) {
    s.renegotiate();
    s.answerAsUsual();
  });
  client.certificate = other.fingerprint();
  client.login("127.0.0.1", "joe", "x", "", other.port());
  const int error = numberOf([&] { client.currentRemoteDirectory(); });
  EXPECT_TRUE(error == 0 || error == number(FtpErrorNumber::connectionLost)) << error;
}

TEST_F(TlsTest, EndsAnEncryptedTransferInOrder) {
  login();
  client.command("TYPE I");
  server.on("RETR", [](Session& s) {
    s.openData();
    s.reply("150 Here.");
    while (s.sendData(std::string(100'000, 'x'))) {
    }
    s.cutData();
    s.reply("426 Aborted.");
  });
  client.onProgress = [&](const FtpProgress& p) {
    if (p.count > 0) client.abort();
  };
  EXPECT_EQ(numberOfGet(), number(FtpErrorNumber::aborted));
  EXPECT_EQ(client.currentRemoteDirectory(), "/") << "the session goes on";
}

TEST_F(FtpClientTest, KnowsWhetherTheServerOffersTls) {
  login();
  EXPECT_FALSE(client.offersTls());
  server.on("FEAT", replies("211-Features:\r\n UTF8\r\n AUTH TLS\r\n211 End"));
  login();
  EXPECT_TRUE(client.offersTls());
}

}  // namespace
}  // namespace quillmoor
