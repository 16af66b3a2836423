#include "launch/launch_spec.h"

#include <QDir>
#include <QFileInfo>

#include "launch/launch_target.h"

namespace quorvelle {

namespace {

QString suffixOf(const QString& program) {
    return QFileInfo(program).suffix().toLower();
}

LaunchSpec failed(const QString& error) {
    return {.error = error};
}

}  // namespace

LaunchSpec resolveTarget(const QJsonObject& subscription, const QJsonObject& target,
                         const QStringList& extras) {
    const QString dir = subscription.value(u"dir").toString();
    const QString exe = target.value(u"exe").toString();
    if (dir.isEmpty() || exe.isEmpty()) {
        return failed(QStringLiteral("this launch target has no executable configured"));
    }
    const QDir root(QDir(dir).absolutePath());
    const QString program = QDir::cleanPath(root.absoluteFilePath(QDir::fromNativeSeparators(exe)));
    if (!target.value(u"allow_outside").toBool() && !program.startsWith(root.path())) {
        return failed(
            QStringLiteral("the executable is outside the install directory (enable "
                           "\"allow launching outside\" for this target to run it)"));
    }
    if (!QFileInfo(program).isFile()) {
        return failed(QStringLiteral("not found: %1 (has this subscription synced yet?)")
                          .arg(QDir::toNativeSeparators(program)));
    }
    const QString workingDir = target.value(u"working_dir").toString();
    const QString suffix = suffixOf(program);
    return {
        .ok = true,
        .program = program,
        .workingDir = workingDir.isEmpty() ? root.path() : root.absoluteFilePath(workingDir),
        .arguments = targetArguments(target) + extras,
        .isProgram = suffix.isEmpty() || suffix == u"exe" || suffix == u"com" || suffix == u"scr",
        .isScript = suffix == u"bat" || suffix == u"cmd" || suffix == u"ps1"};
}

ProcessStart processFor(const LaunchSpec& spec) {
    const QString suffix = suffixOf(spec.program);
    const QString file = QDir::toNativeSeparators(spec.program);
    if (suffix == u"bat" || suffix == u"cmd") {
        return {QStringLiteral("cmd.exe"), QStringList{QStringLiteral("/c"), file} + spec.arguments,
                spec.workingDir};
    }
    if (suffix == u"ps1") {
        return {QStringLiteral("powershell.exe"),
                QStringList{QStringLiteral("-ExecutionPolicy"), QStringLiteral("Bypass"),
                            QStringLiteral("-File"), file} +
                    spec.arguments,
                spec.workingDir};
    }
    return {spec.program, spec.arguments, spec.workingDir};
}

}  // namespace quorvelle
