#include <QProcess>
#include <algorithm>

#include "launch/process.h"

namespace quorvelle {

namespace {

/// An argument as cmd.exe hands it on whole, and as the C run-time library of a program that
/// the batch file passes it to reads it: between quotes, with quotes of its own, and
/// backslashes before one, doubled. (A backslash before a quote would do for the library, but
/// cmd.exe takes that quote for the end and what follows, an "&" say, for its own.)
QString quoted(const QString& argument) {
    const QString special = QStringLiteral(" \t\"%&|<>^()@,;=");
    const bool plain = std::none_of(argument.begin(), argument.end(),
                                    [&](QChar c) { return special.contains(c); });
    if (plain && !argument.isEmpty()) {
        return argument;
    }
    QString text;
    qsizetype backslashes = 0;
    for (const QChar c : argument) {
        if (c == u'"') {
            text += QString(backslashes, u'\\') + u'"';
        } else if (c == u'%') {
            // Quotes do not keep "%NAME%" from being expanded. This does: the first "%" is
            // none of a name's, and what follows it expands to nothing.
            text += QStringLiteral("%%cd:~,");
        }
        text += c;
        backslashes = c == u'\\' ? backslashes + 1 : 0;
    }
    return u'"' + text + QString(backslashes, u'\\') + u'"';
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
