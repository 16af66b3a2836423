#pragma once

#include <QJsonObject>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace quorvelle::testing {

struct Outcome {
    /// The exit code, or minus the signal number of a process that was killed.
    int code = 0;
    QString out;
    QString err;

    /// Standard output as the one JSON object it must be; fails the test otherwise.
    QJsonObject json() const;
};

/// A place of its own for runs of the real executable: a folder, its configuration in
/// "config" below it, an environment without the developer's own settings.
class Sandbox {
public:
    Sandbox();

    QString path(const QString& relative) const;
    QString configPath() const { return path(QStringLiteral("config/config.json")); }

    Outcome run(const QStringList& args) const;
    Outcome runProgram(const QString& program, const QStringList& args) const;

    void write(const QString& relative, const QByteArray& bytes) const;
    /// A file's bytes; "(missing)" when there is none.
    QByteArray read(const QString& relative) const;
    /// Every file below a folder of the sandbox as "path=content", sorted; folders that
    /// are empty as "path/". "(missing)" alone when the folder is missing.
    QStringList tree(const QString& relative) const;
    QJsonObject config() const;
    void writeConfig(const QJsonObject& document) const;
    /// Writes a configuration with the server, the token "t" and the subscription "app".
    void follow(const QString& server, const QString& channel = QStringLiteral("stable"),
                const QString& place = QStringLiteral("app")) const;

    QProcessEnvironment environment;

private:
    QTemporaryDir folder;
};

QString quorvelleProgram();

}  // namespace quorvelle::testing
