#include "support/fake_builds.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

namespace {

QString authorityData(const char* name) {
    return QStringLiteral(QUORVELLE_TEST_DATA "/authority/") + QLatin1String(name);
}

std::unique_ptr<httplib::Server> tlsServer() {
    return std::make_unique<httplib::SSLServer>(authorityData("server.pem").toUtf8().data(),
                                                authorityData("server.key").toUtf8().data());
}

/// A server of TLS, with a channel that "app" follows. A sync asks through both layers: the
/// channel through one, the manifest through the other.
struct SecureServer : ::testing::Test {
    SecureServer() {
        publishTide(server, "stable", "b1", {{"a", {"one"}}});
        box.follow(server.url());
    }

    QString sync(const QString& file, const QString& folders) {
        box.environment.insert("SSL_CERT_FILE", file);
        box.environment.insert("SSL_CERT_DIR", folders);
        return box.run({"sync", "--force"}).err;
    }

    FakeServer server{tlsServer(), "https"};
    Sandbox box;
};

}  // namespace

TEST_F(SecureServer, IsJudgedByTheAuthoritiesOfTheEnvironmentInEveryRequest) {
    QDir().mkpath(box.path("folder"));
    QFile::copy(authorityData("authority.pem"), box.path("folder/any name"));
    box.write("folder/other", "no certificate");
    EXPECT_NE(sync({}, {}), "");
    EXPECT_EQ(sync(authorityData("authority.pem"), {}), "");
    EXPECT_EQ(sync({}, box.path("config") + ':' + box.path("folder")), "");
    EXPECT_EQ(sync(box.path("gone"), box.path("folder")),
              "'app': sync failed: SSL_CERT_FILE: cannot read " + box.path("gone") +
                  ": No such file or directory\n");
    EXPECT_EQ(sync(box.path("folder/other"), {}),
              "'app': sync failed: SSL_CERT_FILE: cannot read " + box.path("folder/other") +
                  ": it holds no PEM certificate\n");
    EXPECT_EQ(sync({}, box.path("gone")), "'app': sync failed: SSL_CERT_DIR: cannot read " +
                                              box.path("gone") + ": it is no readable folder\n");
}

TEST_F(SecureServer, IsNotLeftForAnInsecureOne) {
    FakeServer plain;
    const QString target = plain.url() + "/x";
    server.on("GET", kManifestTarget, redirectTo(target));
    EXPECT_EQ(sync(authorityData("authority.pem"), {}),
              "'app': Tide sync: curl: Unsupported protocol\n");
    server.on("GET", "/api/channels/stable", redirectTo(target));
    EXPECT_EQ(sync(authorityData("authority.pem"), {}),
              "'app': sync failed (HTTP 302): the server redirects to \"" + target + "\"\n");
    EXPECT_THAT(plain.lines(), IsEmpty());
}

}  // namespace quorvelle::testing
