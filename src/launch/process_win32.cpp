#include <windows.h>

#include <QProcess>
#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "files/win32.h"
#include "launch/process.h"

namespace quorvelle {

namespace {

const QString kBatchInterpreter = QStringLiteral("cmd.exe");

/// An argument as cmd.exe hands it on whole, and as the C run-time library of a program that
/// the batch file passes it to reads it: between quotes, with quotes of its own, and
/// backslashes before one, doubled. (A backslash before a quote would do for the library, but
/// cmd.exe takes that quote for the end and what follows, an "&" say, for its own.)
QString inQuotes(const QString& argument) {
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

QString quoted(const QString& argument) {
    const QString special = QStringLiteral(" \t\"%&|<>^()@,;=");
    const bool plain = std::none_of(argument.begin(), argument.end(),
                                    [&](QChar c) { return special.contains(c); });
    return plain && !argument.isEmpty() ? argument : inQuotes(argument);
}

/// What follows "cmd.exe /c": cmd.exe takes the first and the last quote away, so the
/// whole stands between two of its own.
QString commandLine(const QStringList& command) {
    QStringList words{inQuotes(command.first())};
    for (const QString& argument : command.sliced(1)) {
        words.append(quoted(argument));
    }
    return u'"' + words.join(u' ') + u'"';
}

/// Where the system keeps its interpreters; any other program as it is.
QString fullPath(const QString& program) {
    if (program == kBatchInterpreter) {
        return QString::fromStdWString(files::win32::systemProgram(L"cmd.exe"));
    }
    if (program == u"powershell.exe") {
        return QString::fromStdWString(
            files::win32::systemProgram(LR"(WindowsPowerShell\v1.0\powershell.exe)"));
    }
    return program;
}

/// Lets a program inherit its standard streams and nothing else: it would keep open whatever
/// it has, such as the pipe through which a caller reads our output.
class StreamsAlone {
public:
    void apply(QProcess::CreateProcessArguments& arguments) {
        extended.StartupInfo = *arguments.startupInfo;
        extended.StartupInfo.cb = sizeof(extended);
        handles = {extended.StartupInfo.hStdInput, extended.StartupInfo.hStdOutput,
                   extended.StartupInfo.hStdError};
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        memory.resize(size);
        extended.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory.data());
        InitializeProcThreadAttributeList(extended.lpAttributeList, 1, 0, &size);
        UpdateProcThreadAttribute(extended.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                  handles.data(), sizeof(handles), nullptr, nullptr);
        arguments.startupInfo = &extended.StartupInfo;
        arguments.flags |= EXTENDED_STARTUPINFO_PRESENT;
    }

private:
    STARTUPINFOEXW extended = {};
    std::array<HANDLE, 3> handles{};
    std::vector<char> memory;
};

}  // namespace

QString refusalOf(const ProcessStart& start) {
    const bool isBroken =
        start.program == kBatchInterpreter &&
        std::any_of(start.arguments.begin(), start.arguments.end(), [](const QString& argument) {
            return argument.contains(u'\r') || argument.contains(u'\n');
        });
    // cmd.exe would take what follows it for something else.
    return isBroken ? QStringLiteral("an argument of a batch file cannot hold a line end")
                    : QString();
}

void configure(QProcess& process, const ProcessStart& start) {
    process.setProgram(fullPath(start.program));
    process.setWorkingDirectory(start.workingDir);
    if (start.program == kBatchInterpreter) {
        process.setNativeArguments(start.arguments.first() + u' ' +
                                   commandLine(start.arguments.sliced(1)));
    } else {
        process.setArguments(start.arguments);
    }
}

void configureDetached(QProcess& process, const ProcessStart& start) {
    configure(process, start);
    const auto streams = std::make_shared<StreamsAlone>();
    process.setCreateProcessArgumentsModifier(
        [streams](QProcess::CreateProcessArguments* arguments) {
            streams->apply(*arguments);
            // With this console it would get the next Ctrl-C that is typed here, and end with
            // its window.
            arguments->flags |= CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP;
        });
}

QString crashText(const QProcess& process) {
    return QStringLiteral("crashed with code 0x%1")
        .arg(static_cast<quint32>(process.exitCode()), 8, 16, QLatin1Char('0'));
}

void makeExecutable(const QString&) {}

}  // namespace quorvelle
