#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <csignal>

#include "onboarding_fixture.h"

namespace quorvelle::testing {

TEST_F(StorageInitTest, KeepsTheCiFileForItsOwnerAlone) {
    const Sandbox& sandbox = config.sandbox;
    const QString path = sandbox.path("ci.env");
    const QString line = "--ci-secret-file ";
    EXPECT_THAT(create({}, line + path).out,
                HasSubstr("\nCI credential written to " + path.toStdString() +
                          " (owner-only). Quorvelle does not keep a copy.\n"));
    EXPECT_TRUE(isOwnersAlone(path));
    EXPECT_THAT(sandbox.read("ci.env").toStdString(), HasSubstr("TIDE_S3_SECRET=ee511b42dcae"));

    // Refused before anything is created: no folder, a pipe that nobody reads (which would
    // hold the run up), and a link that must not get a file at its end.
    ASSERT_EQ(::mkfifo(sandbox.path("pipe").toUtf8().constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(sandbox.path("nowhere"), sandbox.path("link")));
    for (const char* file : {"none/ci.env", "pipe", "link"}) {
        const Ran refused = create({}, line + sandbox.path(file));
        EXPECT_EQ(refused.err, "cannot write " + sandbox.path(file).toStdString() + "\n");
        EXPECT_EQ(refused.code, 2);
        EXPECT_THAT(cloudflare.server.lines(), Each(StartsWith("GET ")));
        EXPECT_EQ(sandbox.read("nowhere"), "(missing)");
    }

    const Ran full = create({}, line + "/dev/full");
    EXPECT_EQ(full.err,
              "storage is connected, but the CI credential could not be written to /dev/full - it "
              "cannot be shown again; mint a new one with 'storage init' on a fresh bucket if you "
              "lose it\n");
    EXPECT_EQ(full.code, 2);
    EXPECT_EQ(cloudflare.left().size(), 3U);

    const QByteArray earlier = sandbox.read("ci.env");
    EXPECT_EQ(create({{9, ReplyFault::kRefuse}}, line + path).code, 2);
    EXPECT_EQ(sandbox.read("ci.env"), earlier);
}

/// Before the third request nothing holds interrupts up: they end the process.
TEST_F(StorageInitTest, UndoesItsWorkWheneverItIsInterrupted) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        cloudflare.interrupt = [signal] { ::kill(::getpid(), signal); };
        checkEverywhere(ReplyFault::kInterrupt, 3);
    }
    EXPECT_GT(endings["undone"], 50);
    EXPECT_GT(endings["left behind"], 20);
    EXPECT_EQ(create({{9, ReplyFault::kInterrupt}}).err, "interrupted\n");
    EXPECT_EQ(create({{10, ReplyFault::kInterrupt}}).code, 0);
}

}  // namespace quorvelle::testing
