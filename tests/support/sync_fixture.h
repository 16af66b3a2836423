#pragma once

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "support/fake_builds.h"
#include "support/outcomes.h"

namespace quorvelle::testing {

/// A server and a sandbox with one subscription: "app" of channel "stable", installed in
/// "apps/app". Every test runs in text mode (false) and in JSON mode (true).
class SyncTest : public ::testing::TestWithParam<bool> {
protected:
    SyncTest();

    QJsonObject subscription(const QString& name, const QString& channel) const;
    void subscribe(const QJsonArray& subscriptions);

    /// Runs the program in the test's mode, under the conditions that `obey` asks for.
    Outcome run(const QStringList& words, bool obeyPermissions = false) const;

    /// Checks the outcome of a sync of "app": `result` is the record's ("synced", "current",
    /// "blocked", "failed"), `progress` the lines before the message.
    void expectResult(const Outcome& got, const QString& result, const QStringList& progress,
                      const QString& message) const;
    void expectSync(const QString& result, const QStringList& progress, const QString& message,
                    const QStringList& words = {"sync"}) const {
        expectResult(run(words), result, progress, message);
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

    FakeServer server;
    Sandbox box;
};

inline std::string modeName(const ::testing::TestParamInfo<bool>& mode) {
    return mode.param ? "json" : "text";
}

/// The line that begins every sync of "app".
inline const QString kChecking = QStringLiteral("'app': checking channel 'stable' ...");

}  // namespace quorvelle::testing
