#include "support/sync_fixture.h"

namespace quorvelle::testing {

SyncTest::SyncTest() {
    subscribe({subscription("app", "stable")});
}

QJsonObject SyncTest::subscription(const QString& name, const QString& channel) const {
    return {{"name", name},
            {"server", server.url()},
            {"channel", channel},
            {"dir", box.path("apps/" + name)}};
}

void SyncTest::subscribe(const QJsonArray& subscriptions) {
    box.writeConfig({{"subscriptions", subscriptions}});
}

void SyncTest::expectResult(const Outcome& got, const QString& result, const QStringList& progress,
                            const QString& message) {
    const bool failed = result == "failed";
    const QStringList out = failed ? progress : progress + QStringList(message);
    expectOutcome(got,
                  result == "blocked" ? 3
                  : failed            ? 2
                                      : 0,
                  out.isEmpty() ? QString() : out.join(u'\n') + u'\n',
                  failed ? message + u'\n' : QString());
}

QStringList SyncTest::fetching(const QString& build, const QStringList& paths, int count) {
    QStringList lines{kChecking, "'app': fetching manifest of build " + build + " ..."};
    for (qsizetype i = 0; i < paths.size(); ++i) {
        lines.append(QString("'app': fetching %1/%2: ")
                         .arg(i + 1)
                         .arg(count == 0 ? paths.size() : qsizetype(count)) +
                     paths[i]);
    }
    return lines;
}

QStringList SyncTest::whole(const QString& build, const QStringList& paths) {
    return fetching(build, paths) + QStringList(activating(build));
}

QStringList SyncTest::retrying(const QString& build) {
    return {kChecking, "'app': build " + build + " is already staged - retrying activation ...",
            activating(build)};
}

QString SyncTest::activating(const QString& build) {
    return "'app': activating build " + build + " ...";
}

QString SyncTest::synced(const QString& build, int files, int bytes) const {
    return QString("'app': synced build %1 (%2 files, %3 bytes) -> ")
               .arg(build, QString::number(files), QString::number(bytes)) +
           QDir::toNativeSeparators(box.path("apps/app"));
}

QString SyncTest::retried(const QString& build) const {
    return "'app': synced build " + build + " -> " + QDir::toNativeSeparators(box.path("apps/app"));
}

QString SyncTest::inUse(const QString& build) const {
    return "'app': build " + build + " is downloaded and ready, but files in " +
           QDir::toNativeSeparators(box.path("apps/app")) +
           " are in use - the update will complete once they are closed";
}

QString SyncTest::notActivated(const QString& build) {
    return "'app': build " + build +
           " is downloaded and ready, but could not be activated - the update will be retried";
}

QString SyncTest::upToDate(const QString& build) {
    return "'app' is up to date (build " + build + ")";
}

QStringList SyncTest::state() const {
    return QDir(box.path("apps/.quorvelle"))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray SyncTest::stateBytes(const char* suffix) const {
    return box.read(QString("apps/.quorvelle/app") + suffix);
}

void SyncTest::writeState(const char* suffix, const QByteArray& bytes) const {
    box.write(QString("apps/.quorvelle/app") + suffix, bytes);
}

}  // namespace quorvelle::testing
