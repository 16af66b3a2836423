#include <gmock/gmock.h>

#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

/// How one of several subscriptions ends.
struct Ending {
    QJsonObject record;
    /// The lines before its message.
    QStringList progress;
};

class SyncCommand : public SyncTest {
protected:
    static Ending ending(const char* name, const char* result, const QString& message,
                         const QStringList& progress) {
        return {{{"name", name}, {"result", result}, {"message", message}}, progress};
    }

    void expectEndings(const QString& line, int code, const std::vector<Ending>& endings) {
        SCOPED_TRACE(line.toStdString());
        const Outcome got = run(args(line));
        QString said;
        QString failures;
        QJsonArray all;
        for (const auto& [record, progress] : endings) {
            const bool failed = record["result"] == "failed";
            said += progress.isEmpty() ? QString() : progress.join(u'\n') + u'\n';
            (failed ? failures : said) += record["message"].toString() + u'\n';
            all.append(record);
        }
        if (!GetParam()) {
            expectOutcome(got, code, said, failures);
            return;
        }
        EXPECT_EQ(got.code, code);
        EXPECT_EQ(got.err, QString());
        EXPECT_EQ(got.json(), (QJsonObject{{"results", all}})) << got.out.toStdString();
    }

    FakeServer second;
};

INSTANTIATE_TEST_SUITE_P(Modes, SyncCommand, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "json" : "text"; });

TEST_P(SyncCommand, ReturnsTheLargestCodeOfTheChosenSubscriptions) {
    QJsonObject other = subscription("%1", "c");
    other.insert("server", second.url());
    subscribe({subscription("kit", "gone"), subscription("app", "stable"), other});
    publish(server, "stable", "b1", {{"a", "a"}});
    box.write("apps/app", "in the way");
    second.onJson("GET", "/api/channels/c", {});
    const Ending gone =
        ending("kit", "failed", "'kit': sync failed (HTTP 404): nothing at /api/channels/gone",
               {"'kit': checking channel 'gone' ..."});
    Ending blocked = ending("app", "blocked", notActivated("b1"), whole("b1", {"a"}));
    blocked.record.insert("build", "b1");
    const Ending none =
        ending("%1", "current", "'%1' has no build yet", {"'%1': checking channel 'c' ..."});
    expectEndings("sync", 3, {gone, blocked, none});
    blocked.progress = retrying("b1");
    expectEndings("sync --server " + server.url(), 3, {gone, blocked});
    expectEndings("sync --server " + second.url(), 0, {none});
    expectEndings("sync --name %1 --force", 0, {none});
}

TEST_P(SyncCommand, ReportsIncompleteSubscriptionsAndGoesOn) {
    QJsonObject nameless = subscription("x", "c");
    nameless.remove("name");
    nameless.remove("dir");
    subscribe({nameless, subscription("100%2", ""), subscription("app", "stable")});
    server.onJson("GET", "/api/channels/stable", {});
    const QString incomplete = "subscription '%1' is incomplete (needs server, channel, dir)";
    expectEndings("sync", 2,
                  {ending("", "failed", incomplete.arg("?"), {}),
                   ending("100%2", "failed", incomplete.arg("100%2"), {}),
                   ending("app", "current", "'app' has no build yet", {kChecking})});
}

TEST(SyncWords, AreChecked) {
    const Sandbox box;
    expectError(box, args("sync --name app"), 1,
                "no subscriptions (quorvelle subscribe <server> <channel> --dir <path>)");
    EXPECT_EQ(box.run(args("subscribe http://h c --dir x")).code, 0);
    expectError(box, args("sync --name 100%1"), 1, "no subscription named '100%1'");
    expectError(box, args("sync --server http://h/"), 1, "no subscriptions on http://h/");
}

}  // namespace
}  // namespace quorvelle::testing
