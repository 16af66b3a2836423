#pragma once

#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include "support/notation.h"
#include "support/platform.h"

/// Runs of the program, and what is expected of them.

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
    /// Of version 2, unless the document says another.
    void writeConfig(QJsonObject document) const;
    /// Writes a configuration with the server, the token "t" and the subscription "app".
    void follow(const QString& server, const QString& channel = QStringLiteral("stable"),
                const QString& place = QStringLiteral("app")) const;

    QProcessEnvironment environment;

private:
    QTemporaryDir folder;
};

QString quorvelleProgram();

/// The object that the text spells; fails the test when it spells none.
QJsonObject object(const QString& text);

/// Checks both streams and the exit code of a finished run.
void expectOutcome(const Outcome& got, int code, const QString& out, const QString& err = {});

/// Runs the command in both modes and expects nothing but the error: as a line on standard
/// error in text mode, as one object on standard output in JSON mode.
void expectError(const Sandbox& sandbox, const QStringList& words, int code,
                 const QString& message);

/// Runs the command in both modes and expects the usage text and exit code 1.
void expectUsage(const Sandbox& sandbox, const QStringList& words);

/// A run that obeys file permissions, also when the tests run as root.
Outcome runObeyingPermissions(const Sandbox& sandbox, const QStringList& words);

}  // namespace quorvelle::testing
