#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace quorvelle {

/// What a launch target comes down to on this machine. After a failure only `error` means
/// anything.
struct LaunchSpec {
    bool ok = false;
    /// Why the target cannot be run; the program itself has no say in this.
    QString error = {};
    /// The target's file: absolute, cleaned, "/" between its parts.
    QString program = {};
    /// Where it is started, absolute; whether it exists is not looked at.
    QString workingDir = {};
    QStringList arguments = {};
    /// Started by itself: no suffix, "exe", "com" or "scr".
    bool isProgram = false;
    /// Started through an interpreter: "bat", "cmd" or "ps1".
    bool isScript = false;
};

/// Resolves a merged target in the install directory of its subscription. The executable
/// must be a file and, unless the target has "allow_outside", its path must begin with the
/// directory's. `extras` follow the target's own arguments unchanged.
LaunchSpec resolveTarget(const QJsonObject& subscription, const QJsonObject& target,
                         const QStringList& extras);

/// A process to start: a program by path or by a name that is searched for in PATH.
struct ProcessStart {
    QString program;
    QStringList arguments;
    QString workingDir;
};

/// How a resolved target is started: batch files through cmd.exe, PowerShell scripts
/// through powershell.exe, on every platform; anything else directly.
ProcessStart processFor(const LaunchSpec& spec);

}  // namespace quorvelle
