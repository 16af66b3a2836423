#include "support/cargo_world.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QRegularExpression>
#include <QUrl>

#include "support/faulty_run.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

using Files = QMap<QString, QByteArray>;

constexpr int kLineBytes = 16;

QByteArray twoMebibytes(const char (&line)[kLineBytes + 1]) {
    return QByteArray(line).repeated(2 * 1024 * 1024 / kLineBytes);
}

const Files& build1() {
    static const Files files{{QStringLiteral("bin/same"), "same"},
                             {QStringLiteral("data/big"), twoMebibytes("an old big line\n")},
                             {QStringLiteral("data/deep/empty"), ""},
                             {QStringLiteral("data/gone/old"), "removed"},
                             {QStringLiteral("readme"), "one"}};
    return files;
}

const Files& build2() {
    static const Files files{{QStringLiteral("bin/new/added"), "added"},
                             {QStringLiteral("bin/same"), "same"},
                             {QStringLiteral("data/big"), twoMebibytes("a newer big one\n")},
                             {QStringLiteral("data/deep/empty"), ""},
                             {QStringLiteral("readme"), "two"}};
    return files;
}

void writeFiles(const Sandbox& sandbox, const QString& folder, const Files& files) {
    for (auto file = files.begin(); file != files.end(); ++file) {
        sandbox.write(folder + u'/' + file.key(), file.value());
    }
}

QByteArray marker(const char* build) {
    return QJsonDocument(QJsonObject{{QStringLiteral("schema_version"), 1},
                                     {QStringLiteral("build"), QLatin1String(build)},
                                     {QStringLiteral("channel"), QStringLiteral("stable")}})
        .toJson();
}

QStringList treeOf(const Files& files) {
    QStringList lines;
    for (auto file = files.begin(); file != files.end(); ++file) {
        lines.append(file.key() + u'=' + QString::fromUtf8(file.value()));
    }
    return lines;
}

std::string holding(const Sandbox& sandbox, const QString& folder) {
    const QStringList tree = sandbox.tree(folder);
    if (tree == treeOf(build1())) {
        return "build 1";
    }
    if (tree == treeOf(build2())) {
        return "build 2";
    }
    if (tree == QStringList(QStringLiteral("(missing)"))) {
        return "nothing";
    }
    std::string text = "a mixture:";
    for (const QString& line : tree) {
        text += ' ' + line.left(40).simplified().toStdString();
    }
    return text;
}

/// Names in a folder. A save that was killed just before its rename leaves a temporary
/// name with six random letters, which nothing reads; it is left out.
QStringList namesIn(const Sandbox& sandbox, const char* folder) {
    static const QRegularExpression lasting(QStringLiteral("^(?!.*\\.json\\.[A-Za-z]{6}$)"));
    return QDir(sandbox.path(QLatin1String(folder)))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
        .filter(lasting);
}

}  // namespace

CargoWorld::CargoWorld() {
    server.onJson("GET", "/api/channels/stable", {{QStringLiteral("build"), QStringLiteral("b2")}});
    QJsonArray entries;
    for (auto file = build2().begin(); file != build2().end(); ++file) {
        entries.append(QJsonObject{{QStringLiteral("path"), file.key()}});
        server.onBytes(
            "GET", "/api/builds/b2/files?path=" + QUrl::toPercentEncoding(file.key()).toStdString(),
            file.value().toStdString());
    }
    server.onJson("GET", "/api/builds/b2", {{QStringLiteral("files"), entries}});
}

void CargoWorld::prepare(const Sandbox& sandbox, Start start) const {
    sandbox.writeConfig(
        {{QStringLiteral("schema_version"), 2},
         {QStringLiteral("subscriptions"),
          QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("app")},
                                 {QStringLiteral("server"), server.url()},
                                 {QStringLiteral("channel"), QStringLiteral("stable")},
                                 {QStringLiteral("dir"), sandbox.path(QStringLiteral("games/app"))},
                                 {QStringLiteral("token"), QStringLiteral("t")}}}}});
    if (start == Start::kNothing) {
        return;
    }
    const QString state = start == Start::kLegacy ? QStringLiteral("games/app")
                                                  : QStringLiteral("games/.quorvelle/app");
    writeFiles(sandbox, QStringLiteral("games/app"), build1());
    sandbox.write(state + QStringLiteral(".installed.json"), marker("b1"));
    if (start == Start::kBuild1) {
        return;
    }
    writeFiles(sandbox, state + QStringLiteral(".staging"), build2());
    sandbox.write(state + QStringLiteral(".staged.json"), marker("b2"));
    writeFiles(sandbox, state + QStringLiteral(".old"), {{QStringLiteral("sub/left"), "over"}});
}

std::string standing(const Sandbox& sandbox) {
    const std::string installed = holding(sandbox, QStringLiteral("games/app"));
    const std::string old = holding(sandbox, QStringLiteral("games/.quorvelle/app.old"));
    if (installed != "nothing" || old == "nothing") {
        return installed;
    }
    return "old: " + old + ", staging: " + stagedFiles(sandbox);
}

std::string stagedFiles(const Sandbox& sandbox) {
    return holding(sandbox, QStringLiteral("games/.quorvelle/app.staging"));
}

void expectConvergence(Sandbox& sandbox, bool mayKeepOld) {
    const Outcome sync = runFaulty(sandbox, {QStringLiteral("sync")}, {});
    EXPECT_EQ(sync.code, 0) << sync.err.toStdString() << sync.out.toStdString();
    EXPECT_EQ(standing(sandbox), "build 2");
    EXPECT_EQ(
        QJsonDocument::fromJson(sandbox.read(QStringLiteral("games/.quorvelle/app.installed.json")))
            .object()
            .value(u"build")
            .toString(),
        QStringLiteral("b2"));
    EXPECT_EQ(namesIn(sandbox, "games"),
              QStringList({QStringLiteral(".quorvelle"), QStringLiteral("app")}));
    QStringList state = namesIn(sandbox, "games/.quorvelle");
    if (mayKeepOld) {
        state.removeAll(QStringLiteral("app.old"));
    }
    EXPECT_EQ(state, QStringList(QStringLiteral("app.installed.json")));

    const Outcome again = runFaulty(sandbox, {QStringLiteral("sync")}, {});
    EXPECT_EQ(again.code, 0);
    EXPECT_TRUE(again.out.endsWith(QStringLiteral("'app' is up to date (build b2)\n")))
        << again.out.toStdString();
}

}  // namespace quorvelle::testing
