#include "cli/commands.h"

#include <QDir>
#include <optional>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/install_folders.h"
#include "config/server_url.h"
#include "config/subscription.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "files/safe_path.h"
#include "server/next_step.h"
#include "server/server_option.h"

namespace quorvelle {

namespace {

const QString kSubscriptions = QStringLiteral("subscriptions");

/// Ends a command whose change was not saved: `missing` is the error when it was not even
/// wanted.
int endUnsaved(config::Changed outcome, const QString& missing) {
    return outcome == config::Changed::kNotWanted ? failWith(kExitUsage, missing)
                                                  : failWith(kExitFailed, config::couldNotWrite());
}

/// Tells a terminal which other subscriptions install where a new one does.
void noteNeighbours(const QJsonArray& others, const QString& dir) {
    for (const QJsonValue& other : others) {
        const QString theirs = other[u"dir"].toString();
        if (config::foldersMeet(theirs, dir)) {
            printNote(QStringLiteral("'%1' installs in %2 already - each sync of one replaces what "
                                     "the other installed")
                          .arg(other[u"name"].toString(), QDir::toNativeSeparators(theirs)));
        }
    }
}

/// One setting of a subscription: how it is typed, where it is stored, what is said.
struct Setting {
    QString key;
    std::optional<int> (*parse)(const QString& text);
    QString invalid;
    QString (*changed)(const QString& name, int value);
};

int changeSetting(const QStringList& args, const Setting& setting) {
    if (args.size() != 2) {
        return printUsage();
    }
    const QString& name = args.at(0);
    const std::optional<int> value = setting.parse(args.at(1));
    if (!value) {
        return failWith(kExitUsage, setting.invalid);
    }
    QJsonObject entry;
    const auto outcome = config::change([&](QJsonObject& document) {
        QJsonArray entries = config::subscriptions(document);
        const qsizetype at = config::indexOfSubscription(entries, name);
        if (at < 0) {
            return false;
        }
        entry = entries.at(at).toObject();
        entry.insert(setting.key, *value);
        entries.replace(at, entry);
        document.insert(kSubscriptions, entries);
        return true;
    });
    if (outcome != config::Changed::kSaved) {
        return endUnsaved(outcome, QStringLiteral("no subscription named '%1'").arg(name));
    }
    printResult(entry, setting.changed(name, *value));
    return kExitSuccess;
}

}  // namespace

int subscribeCommand(QStringList args) {
    const QString dir = takeOption(args, QStringLiteral("--dir"));
    const auto chosenName = takeGiven(args, QStringLiteral("--name"));
    const QString token = takeOption(args, QStringLiteral("--token"));
    const QString byDefault = QStringLiteral("default");
    const auto interval = parseInterval(takeOption(args, QStringLiteral("--interval"), byDefault));
    const auto selfHeal = parseSelfHeal(takeOption(args, QStringLiteral("--self-heal"), byDefault));
    if (!areNames(args, 2) || withoutTrailingSlashes(args.at(0)).isEmpty() || dir.isEmpty() ||
        isEmptyName(chosenName) || !interval || !selfHeal) {
        return printUsage();
    }
    const QString place = absolutePath(dir);
    if (const std::string reason = files::whyNoInstallDirectory(place.toStdString());
        !reason.empty()) {
        return failWith(kExitUsage,
                        QStringLiteral("cannot install into %1: %2")
                            .arg(QDir::toNativeSeparators(place), QString::fromStdString(reason)));
    }
    const QString& channel = args.at(1);
    const QString name = chosenName.value_or(channel);

    QJsonObject entry;
    QJsonArray others;
    const auto outcome = config::change([&](QJsonObject& document) {
        others = config::subscriptions(document);
        if (config::indexOfSubscription(others, name) >= 0) {
            return false;
        }
        const QString server = config::storedServerUrl(document, args.at(0));
        entry = {{QStringLiteral("name"), name},
                 {QStringLiteral("server"), server},
                 {QStringLiteral("channel"), channel},
                 {QStringLiteral("dir"), place},
                 {QStringLiteral("interval_seconds"), *interval},
                 {QStringLiteral("self_heal"), *selfHeal},
                 {QStringLiteral("token"), token.isEmpty() ? tokenFor(document, server) : token}};
        if (!token.isEmpty()) {
            const QString root =
                config::serverEntry(document, server).value(u"install_root").toString();
            config::upsertServer(document, server, token, root);
        }
        QJsonArray entries = others;
        entries.append(entry);
        document.insert(kSubscriptions, entries);
        return true;
    });
    if (outcome != config::Changed::kSaved) {
        return endUnsaved(
            outcome,
            QStringLiteral("A subscription named '%1' already exists - pick another with --name")
                .arg(name));
    }
    printResult(entry,
                {QStringLiteral("Subscribed:"), QStringLiteral("  ") + subscriptionLine(entry)});
    printNote(addressHint(entry.value(u"server").toString()));
    noteNeighbours(others, entry.value(u"dir").toString());
    return kExitSuccess;
}

int unsubscribeCommand(QStringList args) {
    if (args.size() != 1) {
        return printUsage();
    }
    const QString& name = args.at(0);
    const auto outcome = config::change([&](QJsonObject& document) {
        QJsonArray entries = config::subscriptions(document);
        const qsizetype at = config::indexOfSubscription(entries, name);
        if (at < 0) {
            return false;
        }
        entries.removeAt(at);
        document.insert(kSubscriptions, entries);
        return true;
    });
    if (outcome != config::Changed::kSaved) {
        return endUnsaved(outcome, QStringLiteral("No subscription named '%1'").arg(name));
    }
    printResult({{QStringLiteral("unsubscribed"), name}},
                QStringLiteral("Unsubscribed '%1' (installed files stay on disk)\n").arg(name));
    return kExitSuccess;
}

int subscriptionsCommand(QStringList args) {
    if (hasStrayOption(args)) {
        return printUsage();
    }
    const QJsonArray entries = config::subscriptions(config::load());
    Lines text;
    for (const QJsonValue& entry : entries) {
        text << subscriptionLine(entry.toObject());
    }
    if (entries.isEmpty()) {
        text = {QStringLiteral("No subscriptions. Add one with:"),
                QStringLiteral("  quorvelle subscribe <server> <channel> --dir <path>")};
    }
    printResult({{kSubscriptions, entries}}, text);
    return kExitSuccess;
}

int setIntervalCommand(QStringList args) {
    return changeSetting(
        args, {.key = QStringLiteral("interval_seconds"),
               .parse = parseInterval,
               .invalid = QStringLiteral(
                   "interval must be a positive number of seconds, 'manual', or 'default'"),
               .changed = [](const QString& name, int value) {
                   return QStringLiteral("Subscription '%1' now syncs %2\n")
                       .arg(name, intervalText(value));
               }});
}

int setSelfHealCommand(QStringList args) {
    return changeSetting(
        args, {.key = QStringLiteral("self_heal"),
               .parse = parseSelfHeal,
               .invalid = QStringLiteral("self-heal must be 'none', 'quick', 'full', or 'default'"),
               .changed = [](const QString& name, int value) {
                   return QStringLiteral("Subscription '%1' self-heal check: %2\n")
                       .arg(name, selfHealText(value));
               }});
}

}  // namespace quorvelle
