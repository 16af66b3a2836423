#include "support/process_runner.h"

#include <QDirIterator>
#include <QProcess>

namespace quorvelle::testing {

QJsonObject Outcome::json() const {
    EXPECT_EQ(out.count(u'\n'), 1) << "not one line: " << out.toStdString();
    return object(out);
}

QString quorvelleProgram() {
    return QStringLiteral(QUORVELLE_PROGRAM);
}

Sandbox::Sandbox() : environment(QProcessEnvironment::systemEnvironment()) {
    for (const char* setting :
         {"QUORVELLE_TOKEN", "QUORVELLE_TIDE_PUBLIC_KEY", "TIDE_S3_ENDPOINT", "TIDE_S3_REGION",
          "TIDE_S3_BUCKET", "TIDE_S3_KEY", "TIDE_S3_SECRET"}) {
        environment.remove(QLatin1String(setting));
    }
    environment.insert(QStringLiteral("QUORVELLE_CONFIG_DIR"), path(QStringLiteral("config")));
    environment.insert(QStringLiteral("HOME"), folder.path());
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), path(QStringLiteral("cache")));
}

QString Sandbox::path(const QString& relative) const {
    return folder.filePath(relative);
}

Outcome Sandbox::run(const QStringList& args) const {
    return runProgram(quorvelleProgram(), args);
}

Outcome Sandbox::runProgram(const QString& program, const QStringList& args) const {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder.path());
    process.start(program, args);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(-1)) << program.toStdString();
    const bool killed = process.exitStatus() == QProcess::CrashExit;
    return {killed ? -process.exitCode() : process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void Sandbox::write(const QString& relative, const QByteArray& bytes) const {
    const QString target = path(relative);
    EXPECT_TRUE(QDir().mkpath(QFileInfo(target).path()));
    QFile file(target);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << target.toStdString();
    EXPECT_EQ(file.write(bytes), bytes.size());
}

QByteArray Sandbox::read(const QString& relative) const {
    QFile file(path(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

QStringList Sandbox::tree(const QString& relative) const {
    const QDir root(path(relative));
    if (!root.exists()) {
        return {QStringLiteral("(missing)")};
    }
    QStringList result;
    QDirIterator entries(root.path(),
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString entry = entries.next();
        const QString name = root.relativeFilePath(entry);
        if (entries.fileInfo().isDir() && !entries.fileInfo().isSymLink()) {
            if (QDir(entry).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System |
                                    QDir::NoDotAndDotDot)) {
                result.append(name + u'/');
            }
        } else {
            result.append(name + u'=' + QString::fromUtf8(read(relative + u'/' + name)));
        }
    }
    result.sort();
    return result;
}

QJsonObject Sandbox::config() const {
    return QJsonDocument::fromJson(read(QStringLiteral("config/config.json"))).object();
}

void Sandbox::writeConfig(QJsonObject document) const {
    if (!document.contains("schema_version")) {
        document.insert("schema_version", 2);
    }
    write(QStringLiteral("config/config.json"), QJsonDocument(document).toJson());
}

void Sandbox::follow(const QString& server, const QString& channel, const QString& place) const {
    const QJsonObject app{
        {"name", "app"}, {"server", server}, {"channel", channel}, {"dir", path(place)}};
    writeConfig({{"server", server}, {"token", "t"}, {"subscriptions", QJsonArray{app}}});
}

QJsonObject object(const QString& text) {
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    EXPECT_TRUE(document.isObject()) << "no JSON object: " << text.toStdString();
    return document.object();
}

void expectOutcome(const Outcome& got, int code, const QString& out, const QString& err) {
    EXPECT_EQ(got.code, code);
    EXPECT_EQ(got.out, out);
    EXPECT_EQ(got.err, err);
}

void expectError(const Sandbox& sandbox, const QStringList& words, int code,
                 const QString& message) {
    expectOutcome(sandbox.run(words), code, {}, message + u'\n');
    const Outcome json = sandbox.run(QStringList("--json") + words);
    EXPECT_EQ(json.code, code);
    EXPECT_EQ(json.json(), (QJsonObject{{"error", message}}));
    EXPECT_EQ(json.err, QString());
}

void expectUsage(const Sandbox& sandbox, const QStringList& words) {
    const QString usage = sandbox.run({}).out;
    EXPECT_TRUE(usage.startsWith("Quorvelle CLI "));
    expectOutcome(sandbox.run(words), 1, usage);
    expectOutcome(sandbox.run(QStringList("--json") + words), 1, usage);
}

Outcome runObeyingPermissions(const Sandbox& sandbox, const QStringList& words) {
    const QStringList line = obeyingPermissions() + QStringList(quorvelleProgram()) + words;
    return sandbox.runProgram(line.first(), line.mid(1));
}

}  // namespace quorvelle::testing
