#include <sys/stat.h>
#include <QFile>
#include <QProcess>
#include <csignal>
#include <cstring>

#include "launch/process.h"

namespace quorvelle {

QString refusalOf(const ProcessStart&) {
    return {};
}

void configure(QProcess& process, const ProcessStart& start) {
    process.setProgram(start.program);
    process.setArguments(start.arguments);
    process.setWorkingDirectory(start.workingDir);
    // Ignored here, it would be ignored in the started program, too.
    std::signal(SIGXFSZ, SIG_DFL);
}

void configureDetached(QProcess& process, const ProcessStart& start) {
    configure(process, start);
}

QString crashText(const QProcess& process) {
    const int signal = process.exitCode();
    return QStringLiteral("ended by signal %1 (%2)")
        .arg(QString::number(signal), QString::fromLocal8Bit(::strsignal(signal)));
}

void makeExecutable(const QString& file) {
    struct stat found = {};
    const QByteArray path = QFile::encodeName(file);
    if (::stat(path.constData(), &found) == 0 && (found.st_mode & S_IXUSR) == 0) {
        ::chmod(path.constData(), (found.st_mode & 07777) | S_IXUSR);
    }
}

}  // namespace quorvelle
