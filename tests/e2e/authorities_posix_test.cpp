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

}  // namespace

/// A sync asks through both layers: the channel through one, the manifest through the other.
TEST(Authorities, OfTheEnvironmentCountForEveryRequest) {
    FakeServer server(tlsServer(), "https");
    publishTide(server, "stable", "b1", {{"a", {"one"}}});
    Sandbox box;
    QDir().mkpath(box.path("folder"));
    QFile::copy(authorityData("authority.pem"), box.path("folder/any name"));
    box.write("folder/other", "no certificate");
    box.follow(server.url());
    const auto sync = [&](const QString& file, const QString& folders) {
        box.environment.insert("SSL_CERT_FILE", file);
        box.environment.insert("SSL_CERT_DIR", folders);
        return box.run({"sync", "--force"}).err;
    };
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

}  // namespace quorvelle::testing
