#pragma once

#include <gmock/gmock.h>

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "support/fake_tide.h"
#include "support/sync_fixture.h"

namespace quorvelle::testing {

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
        EXPECT_THAT(state(), ::testing::Not(::testing::Contains(QString("app.staged.json"))));
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
