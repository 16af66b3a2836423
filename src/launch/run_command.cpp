#include "launch/commands.h"

#include <QDir>
#include <QFileInfo>
#include <cstdio>

#include "config/config_document.h"
#include "config/config_file.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/terminal.h"
#include "console/usage.h"
#include "launch/admin_targets.h"
#include "launch/launch_spec.h"
#include "launch/launch_target.h"
#include "launch/process.h"

namespace quorvelle {

namespace {

/// Takes what follows the first "--" out of the list, with the "--" itself.
QStringList takeExtras(QStringList& args) {
    const qsizetype at = args.indexOf(QStringLiteral("--"));
    if (at < 0) {
        return {};
    }
    const QStringList extras = args.sliced(at + 1);
    args.resize(at);
    return extras;
}

int couldNotStart(const LaunchSpec& spec, const QString& reason) {
    const QString text = QStringLiteral("could not start %1").arg(spec.program);
    return failWith(kExitFailed,
                    terminalOf(stderr).isThere ? text + QStringLiteral(": ") + reason : text);
}

int cannotRun(const QString& label, const QString& reason) {
    return failWith(kExitUsage, QStringLiteral("cannot run '%1': %2").arg(label, reason));
}

/// What the channel's administrators offer, and the user's own.
QJsonArray offeredTargets(const QJsonObject& document, const QJsonObject& subscription) {
    const auto [offered, failure] = fetchAdminTargets(document, subscription);
    if (!failure.isEmpty()) {
        printNote(failure + QStringLiteral(" - going on with this subscription's own"));
    }
    return mergedTargets(offered, subscription);
}

/// The files of a build come without permissions. What the program installed is made fit to
/// be started; nothing behind a link out of the install directory is touched.
void allowStart(const QString& dir, const QString& program, IsInstalled isInstalled) {
    const QString install = QFileInfo(dir).canonicalFilePath();
    const QString file = QFileInfo(program).canonicalFilePath();
    if (!install.isEmpty() && file.startsWith(install + u'/') && isInstalled(install)) {
        makeExecutable(file);
    }
}

int runDetached(const QString& label, const LaunchSpec& spec) {
    const ProcessResult started = startDetached(processFor(spec));
    if (!started.value) {
        return couldNotStart(spec, started.reason);
    }
    // The id of an interpreter is not the target's.
    const qint64 pid = spec.isProgram ? *started.value : 0;
    QString line =
        QStringLiteral("Started %1: %2").arg(label, QDir::toNativeSeparators(spec.program));
    if (!spec.arguments.isEmpty()) {
        line += u' ' + spec.arguments.join(u' ');
    }
    if (pid > 0) {
        line += QStringLiteral("  (pid %1)").arg(pid);
    }
    printResult({{QStringLiteral("exe"), spec.program}, {QStringLiteral("pid"), pid}},
                line + u'\n');
    return kExitSuccess;
}

int runAndWait(const LaunchSpec& spec) {
    const ProcessResult ended = startAndWait(processFor(spec));
    if (!ended.value) {
        return couldNotStart(spec, ended.reason);
    }
    printResult(
        {{QStringLiteral("exe"), spec.program}, {QStringLiteral("exit_code"), *ended.value}},
        Lines());
    return static_cast<int>(*ended.value);
}

}  // namespace

int runTargetCommand(QStringList args, IsInstalled isInstalled) {
    // First: what follows "--" is the program's, however much it looks like an option.
    const QStringList extras = takeExtras(args);
    const auto wanted = takeGiven(args, QStringLiteral("--target"));
    const bool wait = takeFlag(args, QStringLiteral("--wait"));
    if (args.size() != 1 || isEmptyName(wanted)) {
        return printUsage();
    }
    const QString& name = args.at(0);
    const QJsonObject document = config::load();
    const QJsonArray subscriptions = config::subscriptions(document);
    const qsizetype at = config::indexOfSubscription(subscriptions, name);
    if (at < 0) {
        return failWith(kExitUsage, QStringLiteral("no subscription named '%1'").arg(name));
    }
    const QJsonObject subscription = subscriptions.at(at).toObject();
    const Selection selection =
        selectTarget(offeredTargets(document, subscription), name, wanted.value_or(QString()));
    if (!selection.error.isEmpty()) {
        return failWith(kExitUsage, selection.error);
    }
    const QString label = selection.target.value(u"label").toString();
    const LaunchSpec spec = resolveTarget(subscription, selection.target, extras);
    if (!spec.ok) {
        return cannotRun(label, spec.error);
    }
    if (!spec.isProgram && !spec.isScript) {
        return failWith(
            kExitUsage,
            QStringLiteral("'%1' is a document, not a program - the client opens it with "
                           "its associated app; the CLI does not")
                .arg(spec.program));
    }
    if (const QString refusal = refusalOf(processFor(spec)); !refusal.isEmpty()) {
        return cannotRun(label, refusal);
    }
    if (spec.isProgram) {
        allowStart(subscription.value(u"dir").toString(), spec.program, isInstalled);
    }
    return wait ? runAndWait(spec) : runDetached(label, spec);
}

}  // namespace quorvelle
