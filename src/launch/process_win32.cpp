#include <QProcess>
#include <algorithm>

#include "launch/process.h"

namespace quorvelle {

namespace {

/// An argument as cmd.exe passes it on whole.
QString quoted(const QString& argument) {
    const QString special = QStringLiteral(" \t&|<>^()@,;=");
    const bool plain = std::none_of(argument.begin(), argument.end(),
                                    [&](QChar c) { return special.contains(c); });
    return plain && !argument.isEmpty() ? argument : u'"' + argument + u'"';
}

/// What follows "cmd.exe /c": cmd.exe takes the first and the last quote away, so the
/// whole stands between two of its own.
QString commandLine(const QStringList& command) {
    QStringList words{u'"' + command.first() + u'"'};
    for (const QString& argument : command.sliced(1)) {
        words.append(quoted(argument));
    }
    return u'"' + words.join(u' ') + u'"';
}

}  // namespace

void configure(QProcess& process, const ProcessStart& start) {
    process.setProgram(start.program);
    process.setWorkingDirectory(start.workingDir);
    if (start.program == u"cmd.exe") {
        process.setNativeArguments(start.arguments.first() + u' ' +
                                   commandLine(start.arguments.sliced(1)));
    } else {
        process.setArguments(start.arguments);
    }
}

}  // namespace quorvelle
