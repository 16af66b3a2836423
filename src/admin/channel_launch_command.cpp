#include "admin/commands.h"

#include <QJsonArray>
#include <functional>
#include <optional>

#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "launch/target_list.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

/// A channel of a server, and the command that works on it.
struct Place {
    Server server;
    QString channel;
    QString operation;
};

Reply readChannel(const Place& place) {
    return getJson(place.server, apiPath(QStringLiteral("/api/channels/%1"), place.channel),
                   place.operation);
}

/// The list that a change begins with; nothing after the reason was printed. A page of
/// something between us and the server must not stand for an empty list.
std::optional<QJsonArray> readTargets(const Place& place) {
    const Reply reply = readChannel(place);
    if (!reply.ok) {
        return std::nullopt;
    }
    const auto targets = isObject(reply) ? targetsOf(reply.object) : std::nullopt;
    if (!targets) {
        printError(
            QStringLiteral("%1 failed: the reply holds no launch targets").arg(place.operation));
    }
    return targets;
}

int writeTargets(const Place& place, const QJsonArray& targets, const QString& text) {
    return finish(
        postJson(place.server, apiPath(QStringLiteral("/api/channels/%1/launch"), place.channel),
                 place.operation, {{kTargetsKey, targets}}),
        text);
}

/// Reads the list, changes it, writes it back, and says `text`. A label that must be in the
/// list and is not ends it before the change.
int editTargets(const Place& place, const std::optional<QString>& requiredLabel,
                const QString& text, const std::function<QJsonArray(const QJsonArray&)>& change) {
    const std::optional<QJsonArray> targets = readTargets(place);
    if (!targets) {
        return kExitFailed;
    }
    if (requiredLabel && indexOfTarget(*targets, *requiredLabel) < 0) {
        return failWith(kExitUsage, QStringLiteral("no launch target labelled '%1' on '%2'")
                                        .arg(*requiredLabel, place.channel));
    }
    return writeTargets(place, change(*targets), text);
}

}  // namespace

int channelLaunchListCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& channel = rest.first();
        const Reply reply = readChannel({server, channel, QStringLiteral("channel launch list")});
        const QJsonArray targets = reply.object.value(kTargetsKey).toArray();
        return finish(reply, targets.isEmpty()
                                 ? Lines{QStringLiteral("'%1' has no launch targets").arg(channel)}
                                 : targetLines(targets));
    });
}

int channelLaunchAddCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const QString label = takeOption(rest, QStringLiteral("--label"));
        const QString exe = takeOption(rest, QStringLiteral("--exe"));
        const QString arguments = takeOption(rest, QStringLiteral("--args"));
        const bool primary = takeFlag(rest, QStringLiteral("--primary"));
        if (!areNames(rest, 1) || label.isEmpty() || exe.isEmpty()) {
            return printUsage();
        }
        const Place place{server, rest.first(), QStringLiteral("channel launch add")};
        const std::optional<QJsonArray> held = readTargets(place);
        if (!held) {
            return kExitFailed;
        }
        const bool known = indexOfTarget(*held, label) >= 0;
        QJsonArray targets = withTarget(*held, label, exe, arguments);
        if (primary) {
            targets = withOnlyPrimary(targets, indexOfTarget(targets, label));
        }
        return writeTargets(place, targets,
                            QStringLiteral("%1 launch target '%2' on '%3'\n")
                                .arg(known ? QStringLiteral("Updated") : QStringLiteral("Added"),
                                     label, place.channel));
    });
}

int channelLaunchRemoveCommand(QStringList args) {
    return onServer(std::move(args), 2, [](const Server& server, QStringList& rest) {
        const QString& channel = rest.at(0);
        const QString& label = rest.at(1);
        return editTargets(
            {server, channel, QStringLiteral("channel launch remove")}, label,
            QStringLiteral("Removed launch target '%1' from '%2'\n").arg(label, channel),
            [&](const QJsonArray& targets) { return withoutTarget(targets, label); });
    });
}

int channelLaunchPrimaryCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const bool clear = takeFlag(rest, QStringLiteral("--clear"));
        if (!areNames(rest, clear ? 1 : 2)) {
            return printUsage();
        }
        const QString& channel = rest.first();
        const Place place{server, channel, QStringLiteral("channel launch primary")};
        if (clear) {
            return editTargets(
                place, std::nullopt,
                QStringLiteral("Cleared the primary launch target on '%1'\n").arg(channel),
                [](const QJsonArray& targets) { return withOnlyPrimary(targets, -1); });
        }
        const QString& label = rest.at(1);
        return editTargets(place, label,
                           QStringLiteral("Marked '%1' primary on '%2'\n").arg(label, channel),
                           [&](const QJsonArray& targets) {
                               return withOnlyPrimary(targets, indexOfTarget(targets, label));
                           });
    });
}

int channelLaunchClearCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& channel = rest.first();
        return writeTargets({server, channel, QStringLiteral("channel launch clear")}, {},
                            QStringLiteral("Removed all launch targets from '%1'\n").arg(channel));
    });
}

}  // namespace quorvelle
