#include <QDateTime>
#include <functional>
#include <thread>

#include "support/fake_builds.h"
#include "support/server_fixture.h"

namespace quorvelle::testing {
namespace {

/// One more than a double can count to.
constexpr qint64 kSize = 9007199254740993;
const QJsonObject kSizes{{"file_count", "3"}, {"total_size", kSize}, {"more", 1}};

struct Push : ServerTest {
    /// Lets the server take these files of build "b1" and promote it into "beta".
    void accept(const QStringList& paths) {
        for (const QString& path : paths) {
            server.onJson("PUT", fileTarget("b1", path), {});
        }
        server.onJson("POST", "/api/builds/b1/finalize", kSizes);
        server.onJson("POST", "/api/channels/beta/promote?build=b1", {{"build", "other"}});
    }

    const QStringList words = args("push build --channel beta --build b1");
};

TEST_F(Push, UploadsFinalizesAndPromotes) {
    const QByteArray binary("\0\r\n\xff{}", 6);
    const QByteArray large(300000, 'x');
    box.write("build/a.bin", binary);
    box.write("build/bin/tool.exe", large);
    box.write("build/empty", "");
    accept({"a.bin", "bin/tool.exe", "empty"});
    expectOutcome(box.run(words), 0,
                  "Pushing 3 files as build b1 to " + server.url() +
                      " ...\n  a.bin (6 bytes)\n  bin/tool.exe (300000 bytes)\n  empty (0 bytes)\n"
                      "Finalized build b1 (3 files, 9007199254740993 bytes)\n"
                      "Channel 'beta' now at build b1\n");
    EXPECT_THAT(server.lines(),
                ElementsAre("PUT /api/builds/b1/files?path=a.bin",
                            "PUT /api/builds/b1/files?path=bin%2Ftool.exe",
                            "PUT /api/builds/b1/files?path=empty", "POST /api/builds/b1/finalize",
                            "POST /api/channels/beta/promote?build=b1"));
    const std::vector<std::string> bodies{binary.toStdString(), large.toStdString(), "", "", ""};
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        const SeenRequest request = server.requests()[i];
        EXPECT_TRUE(request.body == bodies[i]) << request.line();
        EXPECT_EQ(request.header("Content-Type"), "application/octet-stream") << request.line();
        EXPECT_EQ(request.header("Authorization"), "Bearer t") << request.line();
    }
}

TEST_F(Push, SendsRegularVisibleFilesInPathOrder) {
    // By UTF-16 code units: a surrogate pair stands before U+FF21.
    const QStringList sent{"B.lnk", "a.txt", "bin.txt", "bin/x", "é+ &%.txt", "😀", "Ａ"};
    for (const QString& path : sent) {
        box.write("build/" + path, "x");
    }
    box.write("build/.hidden", "x");
    box.write("build/.git/x", "x");
    box.write("build/bin/.hidden/x", "x");
    ASSERT_TRUE(QDir().mkpath(box.path("build/none/at/all")));
    accept(sent);
    EXPECT_EQ(box.run(words).code, 0);
    const std::string put = "PUT /api/builds/b1/files?path=";
    EXPECT_THAT(
        server.lines(),
        ElementsAre(put + "B.lnk", put + "a.txt", put + "bin.txt", put + "bin%2Fx",
                    put + "%C3%A9%2B%20%26%25.txt", put + "%F0%9F%98%80", put + "%EF%BC%A1",
                    "POST /api/builds/b1/finalize", "POST /api/channels/beta/promote?build=b1"));
}

TEST_F(Push, ShowsNamesAndTheServerAsTyped) {
    box.write("100%1/%2", "x");
    const std::string finalize = "/api/builds/%253%20b/finalize";
    server.onJson("PUT", "/api/builds/%253%20b/files?path=%252", {});
    server.onJson("POST", finalize, kSizes);
    server.onJson("POST", "/api/channels/%251/promote?build=%253%20b", {});
    const QStringList typed{"push",    "100%1", "--channel", "%1",
                            "--build", "%3 b",  "--server",  server.url() + "//"};
    const Outcome got = box.run(typed + QStringList("--json"));
    EXPECT_EQ(got.err, QString());
    EXPECT_EQ(got.json(), (QJsonObject{{"build", "%3 b"},
                                       {"channel", "%1"},
                                       {"server", server.url()},
                                       {"file_count", "3"},
                                       {"total_size", kSize}}));
    EXPECT_TRUE(got.out.contains("9007199254740993"));
    server.onBytes("POST", finalize, "");
    expectOutcome(box.run(typed), 0,
                  "Pushing 1 files as build %3 b to " + server.url() +
                      "// ...\n  %2 (1 bytes)\nFinalized build %3 b (0 files, 0 bytes)\n"
                      "Channel '%1' now at build %3 b\n");
}

TEST_F(Push, NamesABuildAfterTheTimeInUtc) {
    box.write("build/a", "x");
    box.environment.insert("TZ", "Asia/Tokyo");
    const auto stamp = [] { return QDateTime::currentDateTimeUtc().toString("yyyyMMdd-HHmmss"); };
    const QString before = stamp();
    const Outcome got = box.run(args("push build --channel beta"));
    const QString after = stamp();
    EXPECT_EQ(got.code, 2);
    const QString build = got.out.section(u' ', 5, 5);
    EXPECT_EQ(build.size(), 15);
    EXPECT_LE(before, build);
    EXPECT_LE(build, after);
    EXPECT_THAT(server.lines(),
                ElementsAre("PUT /api/builds/" + build.toStdString() + "/files?path=a"));
}

TEST_F(Push, ChecksItsWordsInOrder) {
    box.write("file", "x");
    box.write("100%1/.hidden", "x");
    ASSERT_TRUE(QDir().mkpath(box.path("empty/er")));
    const QString noChannel = "push needs --channel <name>";
    expectError(box, args("push"), 1, noChannel);
    expectError(box, args("push a b --server http://x"), 1, noChannel);
    expectError(box, args("push nowhere --channel"), 1, noChannel);
    expectError(box, args("push ./nowhere/ --channel beta"), 2, "./nowhere/ is not a directory");
    expectError(box, args("push file --channel beta"), 2, "file is not a directory");
    expectError(box, {"push", "", "--channel", "beta"}, 2, " is not a directory");
    expectError(box, args("push empty/ --channel beta"), 2, "No files found in empty/");
    expectError(box, args("push 100%1 --channel beta"), 2, "No files found in 100%1");
    box.writeConfig({});
    expectUsage(box, args("push --channel beta"));
    expectError(box, args("push nowhere --channel beta"), 1,
                "'server' is not configured (quorvelle config set server <value>)");
    EXPECT_THAT(server.lines(), ElementsAre());
}

/// Where a push stops, and what was asked until then.
TEST_F(Push, StopsAtTheFirstFailure) {
    box.write("build/a", "12");
    box.write("build/d/%1", "345");
    const QString start = "Pushing 2 files as build b1 to " + server.url() + " ...\n";
    const QString uploads = start + "  a (2 bytes)\n  d/%1 (3 bytes)\n";
    for (const auto& [method, target, context, said, requests] :
         {std::tuple("PUT", "/api/builds/b1/files?path=a", "upload of a", start, 1U),
          {"PUT", "/api/builds/b1/files?path=d%2F%251", "upload of d/%1", start + "  a (2 bytes)\n",
           2U},
          {"POST", "/api/builds/b1/finalize", "finalize", uploads, 3U},
          {"POST", "/api/channels/beta/promote?build=b1", "promote",
           uploads + "Finalized build b1 (3 files, 9007199254740993 bytes)\n", 4U}}) {
        SCOPED_TRACE(context);
        accept({"a", "d/%1"});
        server.onJson(method, target, {{"error", "full %1"}}, 507);
        const QString message = context + QString(" failed (HTTP 507): full %1");
        server.forget();
        expectOutcome(box.run(words), 2, said, message + u'\n');
        EXPECT_EQ(server.lines().size(), requests);
        expectOutcome(box.run(words + QStringList("--json")), 2,
                      QString(R"({"error":")") + message + "\"}\n");
    }
}

TEST_F(Push, StopsAtAFileThatCannotBeOpened) {
    box.write("build/a", "12");
    box.write("build/b", "secret");
    const Held held(box.path("build/b"), Held::From::kReads);
    accept({"a", "b"});
    const QString message = "cannot open " + box.path("build/b");
    expectOutcome(runObeyingPermissions(box, words), 2,
                  "Pushing 2 files as build b1 to " + server.url() + " ...\n  a (2 bytes)\n",
                  message + u'\n');
    expectOutcome(runObeyingPermissions(box, words + QStringList("--json")), 2,
                  R"({"error":")" + message + "\"}\n");
    EXPECT_EQ(server.lines().size(), 2U);
}

TEST_F(Push, NoticesAFileThatIsWrittenToMeanwhile) {
    const QString path = box.path("build/a");
    const std::function<void()> changes[] = {[&] { box.write("build/a", "longer"); },
                                             [&] {
                                                 QFile file(path);
                                                 EXPECT_TRUE(file.open(QIODevice::Append));
                                                 file.setFileTime(QDateTime::fromSecsSinceEpoch(1),
                                                                  QFile::FileModificationTime);
                                             }};
    for (const auto& change : changes) {
        box.write("build/a", "12");
        server.on("PUT", "/api/builds/b1/files?path=a",
                  [&](const httplib::Request&, httplib::Response&) { change(); });
        server.forget();
        expectOutcome(box.run(words), 2,
                      "Pushing 1 files as build b1 to " + server.url() + " ...\n",
                      path + " changed while it was uploaded\n");
        EXPECT_EQ(server.lines().size(), 1U);
    }
}

/// The server takes the head, cuts the file off and only then reads on. The file is larger
/// than what a connection can hold on its way.
TEST_F(Push, NoticesAFileThatShrinksMeanwhile) {
    const QString path = box.path("build/a");
    box.write("build/a", "");
    ASSERT_TRUE(QFile::resize(path, 64 << 20));
    httplib::Server slow;
    slow.Put(".*",
             [&](const httplib::Request&, httplib::Response&, const httplib::ContentReader& body) {
                 QFile::resize(path, 1);
                 body([](const char*, std::size_t) { return true; });
             });
    const int port = slow.bind_to_any_port("127.0.0.1");
    std::thread serving([&] { slow.listen_after_bind(); });
    const QString url = QString("http://127.0.0.1:%1").arg(port);
    expectOutcome(box.run(words + QStringList{"--server", url}), 2,
                  "Pushing 1 files as build b1 to " + url + " ...\n",
                  path + " changed while it was uploaded\n");
    slow.stop();
    serving.join();
}

}  // namespace
}  // namespace quorvelle::testing
