#pragma once

#include "support/fake_builds.h"
#include "support/server_fixture.h"

namespace quorvelle::testing {

/// A server and a sandbox with one subscription: "app" of channel "stable", installed in
/// "apps/app". Runs are in text mode.
class SyncTest : public ProgramTest {
protected:
    SyncTest();

    QJsonObject subscription(const QString& name, const QString& channel) const;
    void subscribe(const QJsonArray& subscriptions);

    /// Checks the outcome of a sync of "app": `result` is "synced" or "current", which a text
    /// does not tell apart, "blocked" or "failed", `progress` the lines before the message.
    static void expectResult(const Outcome& got, const QString& result, const QStringList& progress,
                             const QString& message);
    void expectSync(const QString& result, const QStringList& progress, const QString& message,
                    const QStringList& words = {"sync"}) const {
        expectResult(box.run(words), result, progress, message);
    }

    static QStringList fetching(const QString& build, const QStringList& paths, int count = 0);
    static QStringList whole(const QString& build, const QStringList& paths);
    static QStringList retrying(const QString& build);
    static QString activating(const QString& build);

    /// Messages at the end.
    QString synced(const QString& build, int files, int bytes) const;
    QString retried(const QString& build) const;
    QString inUse(const QString& build) const;
    static QString notActivated(const QString& build);
    static QString upToDate(const QString& build);

    QStringList installed() const { return box.tree("apps/app"); }
    QStringList state() const;
    QByteArray stateBytes(const char* suffix) const;
    void writeState(const char* suffix, const QByteArray& bytes) const;
};

/// The line that begins every sync of "app".
inline const QString kChecking = QStringLiteral("'app': checking channel 'stable' ...");

/// Two builds that share a chunk, and what each leaves installed.
inline const TideFiles kOne{{"a", {"one"}}, {"d/b", {"left ", "right"}}};
inline const TideFiles kTwo{{"a", {"two"}}, {"d/b", {"left ", "RIGHT"}}, {"empty", {}}};
inline const QStringList kOneInstalled{"a=one", "d/b=left right"};
inline const QStringList kTwoInstalled{"a=two", "d/b=left RIGHT", "empty="};
/// The steps of a download of three small chunks.
inline const QString kThreeChunks = "33% (0.0 MB),66% (0.0 MB),100% (0.0 MB)";
/// The line that follows kChecking.
inline const QString kCheckingTide = "'app': checking Tide channel 'stable' ...";

/// Syncs of "app" while the channel's engine is "tide".
class TideTest : public SyncTest {
protected:
    /// The lines of a sync up to its download, with the lines of a check in between; then
    /// one line for each of `steps`, separated by commas.
    static QStringList downloading(const QString& steps, const QStringList& check = {}) {
        QStringList lines = QStringList{kChecking, kCheckingTide} + check;
        lines += "'app': downloading Tide build ...";
        for (const QString& step : steps.split(u',', Qt::SkipEmptyParts)) {
            lines += "'app': downloading Tide build " + step + " ...";
        }
        return lines;
    }
    static QStringList whole(const QString& build, const QString& steps,
                             const QStringList& check = {}) {
        return downloading(steps, check) + QStringList(activating(build));
    }

    void installOne() {
        publishTide(server, "stable", "b1", kOne);
        expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
        server.forget();
    }

    void expectOneStillInstalled() const {
        EXPECT_EQ(installed(), kOneInstalled);
        EXPECT_EQ(object(stateBytes(".installed.json")).value("build"), "b1");
        EXPECT_THAT(state(), Not(Contains(QString("app.staged.json"))));
    }

    /// Checks what was asked for since the last look: of a whole sync these chunks alone.
    void expectFetched(const std::vector<std::string>& chunks) {
        std::vector<std::string> lines{"GET /api/channels/stable", "GET /api/tide/sync/stable",
                                       std::string("GET ") + kManifestTarget};
        for (const std::string& bytes : chunks) {
            lines.push_back("GET " + chunkTarget(bytes));
        }
        EXPECT_EQ(server.lines(), lines);
        server.forget();
    }

    void subscribeWith(const QString& key, const QJsonValue& value) {
        QJsonObject entry = subscription("app", "stable");
        entry.insert(key, value);
        subscribe({entry});
    }

    /// Answers with the descriptor of build b2 for these files, with members changed.
    void describe(const QJsonObject& changes, const TideFiles& files) {
        QJsonObject descriptor = tideDescriptor(server, "b2", files);
        for (auto at = changes.begin(); at != changes.end(); ++at) {
            descriptor.insert(at.key(), at.value());
        }
        server.onJson("GET", "/api/tide/sync/stable", descriptor);
    }
};

}  // namespace quorvelle::testing
