#include <csignal>
#include <future>

#include "support/fake_builds.h"
#include "support/server_fixture.h"
#include "support/terminal_run.h"

namespace quorvelle::testing {

namespace {

const std::vector<int> kBoth{STDOUT_FILENO, STDERR_FILENO};
const std::vector<int> kAll{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};

/// A person at a terminal of 80 columns, with a subscription "app" of the channel "stable".
struct AtATerminal : ServerTest {
    AtATerminal() { box.follow(server.url()); }

    Outcome run(const QString& words, const AtTerminal& there = {"xterm"},
                const std::vector<int>& streams = kBoth) const {
        return runAtTerminal(box, args(words), streams, there);
    }
};

/// The events of a run for a launcher, one a line; of several in a row that tell bytes the
/// first.
QStringList events(const QString& err) {
    QStringList result;
    for (const QString& line : err.split('\n', Qt::SkipEmptyParts)) {
        QJsonObject event = object(line);
        event.remove("message");
        const QString text = QString::fromStdString(testing::text(event));
        const bool isRepeated = event.contains("bytes") && result.last().contains("'bytes'");
        result += isRepeated ? QStringList() : QStringList(text);
    }
    return result;
}

}  // namespace

TEST_F(AtATerminal, ASyncKeepsOneLineThatIsGoneInTheEnd) {
    publish(server, "stable", "b1", {{"a", QByteArray(200000, 'x')}, {"b", "y"}});
    const Outcome cargo = run("sync");
    EXPECT_THAT(cargo.err.toStdString(), HasSubstr(" of 195.3 KiB"));
    EXPECT_EQ(
        screenAfter(cargo.err),
        (QStringList{"'app': checking channel 'stable' ...",
                     "'app': fetching manifest of build b1 ...", "'app': fetching 1/2: a",
                     "'app': fetching 2/2: b", "'app': activating build b1 ...",
                     "'app': synced build b1 (2 files, 200001 bytes) -> " + box.path("app"), ""}));
    publishTide(server, "stable", "b2", {{"a", {std::string(3000, 'a'), std::string(2000, 'b')}}});
    const Outcome tide = run("sync");
    EXPECT_THAT(tide.err.toStdString(), HasSubstr(" of 4.9 KiB"));
    EXPECT_EQ(screenAfter(tide.err),
              (QStringList{"'app': checking channel 'stable' ...",
                           "'app': checking Tide channel 'stable' ...",
                           "'app': downloading Tide build ...", "'app': activating build b2 ...",
                           "'app': synced build b2 -> " + box.path("app"), ""}));
}

TEST_F(AtATerminal, NothingIsLeftOfTheLineAfterAFailureOrCtrlC) {
    publish(server, "stable", "b1", {{"a", QByteArray(200000, 'x')}});
    const QStringList before{"'app': checking channel 'stable' ...",
                             "'app': fetching manifest of build b1 ...", "'app': fetching 1/1: a"};
    std::promise<void> ended;
    server.on("GET", fileTarget("b1", "a"), [&](const auto&, httplib::Response& response) {
        response.set_content_provider(
            200000, "application/octet-stream",
            [&](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                if (offset > 0) {
                    ended.get_future().wait();
                    return false;
                }
                return sink.write(std::string(100000, 'x').data(), 100000);
            });
    });
    const Outcome interrupted =
        run("sync", {.kind = "xterm", .awaited = " of 195.3 KiB", .signal = SIGINT});
    ended.set_value();
    EXPECT_EQ(interrupted.code, -SIGINT);
    EXPECT_EQ(screenAfter(interrupted.err), before + QStringList{""});

    server.on("GET", fileTarget("b1", "a"), truncatedAnswer());
    const QStringList failed = screenAfter(run("sync").err);
    EXPECT_EQ(failed.first(3), before);
    EXPECT_EQ(failed.size(), 5);
    EXPECT_TRUE(failed[3].startsWith("'app': download of a failed")) << failed[3].toStdString();
}

TEST_F(AtATerminal, APushKeepsALineToo) {
    server.onAnythingElse(answering(R"({"file_count":1,"total_size":5000})"));
    box.write("build/a", QByteArray(5000, 'x'));
    const Outcome pushed = run("push build --channel stable --build b1");
    EXPECT_THAT(pushed.err.toStdString(), HasSubstr(" of 4.9 KiB"));
    EXPECT_EQ(screenAfter(pushed.err),
              (QStringList{"Pushing 1 files as build b1 to " + server.url() + " ...",
                           "  a (5000 bytes)", "Finalized build b1 (1 files, 5000 bytes)",
                           "Channel 'stable' now at build b1", ""}));
}

TEST_F(AtATerminal, LaunchersAreToldEveryStep) {
    box.environment.insert("QUORVELLE_PROGRESS", "json");
    publish(server, "stable", "b1", {{"a", "12345"}});
    EXPECT_EQ(events(box.run({"sync"}).err),
              (QStringList{"{'event':'checking','name':'app'}",
                           "{'build':'b1','event':'downloading','name':'app'}",
                           "{'build':'b1','bytes':5,'event':'downloading','name':'app','total':5}",
                           "{'build':'b1','event':'activating','name':'app'}",
                           "{'build':'b1','event':'done','name':'app'}"}));
    // No line is drawn between them.
    publishTide(server, "stable", "b2", {{"a", {"123"}}});
    EXPECT_EQ(events(run("sync", {"xterm"}, {STDERR_FILENO}).err),
              (QStringList{"{'event':'checking','name':'app'}",
                           "{'build':'b2','event':'downloading','name':'app'}",
                           "{'build':'b2','bytes':0,'event':'downloading','name':'app','total':3}",
                           "{'build':'b2','event':'activating','name':'app'}",
                           "{'build':'b2','event':'done','name':'app'}"}));
    EXPECT_EQ(events(box.run({"sync", "--json"}).err),
              (QStringList{"{'event':'checking','name':'app'}",
                           "{'build':'b2','event':'verifying','name':'app'}",
                           "{'build':'b2','event':'done','name':'app'}"}));
    box.write("build/a", "12345");
    const Outcome refused = box.run(args("push build --channel stable --build b3 --json"));
    EXPECT_EQ(events(refused.err).first(2) + events(refused.err).last(1),
              (QStringList{"{'build':'b3','event':'checking','name':'stable'}",
                           "{'build':'b3','event':'uploading','name':'stable'}",
                           "{'build':'b3','event':'failed','name':'stable'}"}));
    EXPECT_TRUE(refused.err.contains(refused.json()["error"].toString()));
}

TEST_F(AtATerminal, WhatStrangersSentStaysInItsLine) {
    server.onJson(
        "GET", "/api/access-requests",
        {{"requests", QJsonArray{QJsonObject{{"id", 17},
                                             {"name", "mallory\n  18  alice"},
                                             {"email", "m\r@evil.example"},
                                             {"message", "hi\n\x1B[1A\x1B[2K\r  19  bob"}}}}});
    EXPECT_EQ(run("requests").err,
              "Pending access requests on " + server.url() +
                  ":\n  17  mallory\\x0A  18  alice  m\\x0D@evil.example  \n      hi\n"
                  "      \\x1B[1A\\x1B[2K\\x0D  19  bob\n");
    server.onJson("GET", "/api/me", {{"error", "no\n\x1B]0;x\x07"}}, 403);
    EXPECT_EQ(run("whoami").err, "whoami failed (HTTP 403): no\\x0A\\x1B]0;x\\x07\n");
}

TEST_F(AtATerminal, DeletionsAskFirst) {
    for (const QString& kind : args("build channel user group")) {
        const std::string target = "/api/" + kind.toStdString() + "s/x";
        server.onJson("DELETE", target, {});
        const QString words = kind + " delete x";
        const QString question = "Delete " + kind + " 'x' on " + server.url() + "?";
        for (const QByteArray no : {"n\n", "\n"}) {
            const Outcome asked = run(words, {.typed = no}, kAll);
            EXPECT_TRUE(asked.err.startsWith(question)) << asked.err.toStdString();
            EXPECT_TRUE(asked.err.endsWith(" [y/N] Nothing was changed.\n"));
            EXPECT_EQ(asked.code, 1);
        }
        EXPECT_EQ(server.lines(), std::vector<std::string>());
        EXPECT_EQ(run(words, {.typed = "YES\n"}, kAll).code, 0);
        EXPECT_FALSE(run(words + " --yes", {}, kAll).err.contains(question));
        EXPECT_FALSE(run(words, {}, kBoth).err.contains(question));
        EXPECT_EQ(box.run(args(words + " --yes")).code, 0);
        EXPECT_EQ(server.lines(), std::vector<std::string>(4, "DELETE " + target));
        server.forget();
    }
}

TEST_F(AtATerminal, FailuresSayTheNextStep) {
    server.onJson("GET", "/api/me", {{"error", "no"}}, 401);
    const QString signIn = "To sign in: quorvelle login " + server.url() +
                           " (or, with an invite, quorvelle join " + server.url() + " <code>)\n";
    EXPECT_EQ(run("whoami").err, "whoami failed (HTTP 401): no\n" + signIn);
    server.onJson("GET", "/api/channels/stable", {{"error", "no"}}, 401);
    EXPECT_TRUE(run("sync").err.endsWith("'app': sync failed (HTTP 401): no\n" + signIn));
    const QString meant =
        "An address begins with http:// or https://. Did you mean http://127.0.0.1:1?\n";
    EXPECT_TRUE(run("builds --server 127.0.0.1:1").err.endsWith(meant));
    EXPECT_TRUE(run("subscribe 127.0.0.1:1 beta --dir d").err.endsWith(meant));
}

}  // namespace quorvelle::testing
