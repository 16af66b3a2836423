#include "cli/commands.h"

#include <optional>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/subscription.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/server_option.h"

namespace quorvelle {

namespace {

const QString kSubscriptions = QStringLiteral("subscriptions");

/// Saves the change; prints why when that fails.
bool savedSubscriptions(config::Change& change) {
    const bool done = change.save();
    if (!done) {
        printError(config::couldNotWrite());
    }
    return done;
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
    config::Change change;
    QJsonArray entries = config::subscriptions(change.document);
    const qsizetype at = config::indexOfSubscription(entries, name);
    if (at < 0) {
        return failWith(kExitUsage, QStringLiteral("no subscription named '%1'").arg(name));
    }
    QJsonObject entry = entries.at(at).toObject();
    entry.insert(setting.key, *value);
    entries.replace(at, entry);
    change.document.insert(kSubscriptions, entries);
    if (!savedSubscriptions(change)) {
        return kExitFailed;
    }
    printResult(entry, setting.changed(name, *value));
    return kExitSuccess;
}

}  // namespace

int subscribeCommand(QStringList args) {
    const QString dir = takeOption(args, QStringLiteral("--dir"));
    const QString chosenName = takeOption(args, QStringLiteral("--name"));
    const QString token = takeOption(args, QStringLiteral("--token"));
    const QString byDefault = QStringLiteral("default");
    const auto interval = parseInterval(takeOption(args, QStringLiteral("--interval"), byDefault));
    const auto selfHeal = parseSelfHeal(takeOption(args, QStringLiteral("--self-heal"), byDefault));
    if (args.size() != 2 || dir.isEmpty() || !interval || !selfHeal) {
        return printUsage();
    }
    const QString& channel = args.at(1);
    const QString name = chosenName.isEmpty() ? channel : chosenName;

    config::Change change;
    QJsonArray entries = config::subscriptions(change.document);
    if (config::indexOfSubscription(entries, name) >= 0) {
        return failWith(
            kExitUsage,
            QStringLiteral("A subscription named '%1' already exists - pick another with --name")
                .arg(name));
    }
    const QString server = config::storedServerUrl(change.document, args.at(0));
    const QJsonObject entry{
        {QStringLiteral("name"), name},
        {QStringLiteral("server"), server},
        {QStringLiteral("channel"), channel},
        {QStringLiteral("dir"), absolutePath(dir)},
        {QStringLiteral("interval_seconds"), *interval},
        {QStringLiteral("self_heal"), *selfHeal},
        {QStringLiteral("token"), token.isEmpty() ? tokenFor(change.document, server) : token}};
    entries.append(entry);
    change.document.insert(kSubscriptions, entries);
    if (!token.isEmpty()) {
        const QString root =
            config::findServer(change.document, server).value(u"install_root").toString();
        config::upsertServer(change.document, server, token, root);
    }
    if (!savedSubscriptions(change)) {
        return kExitFailed;
    }
    printResult(entry, QStringLiteral("Subscribed:\n  ") + subscriptionLine(entry));
    return kExitSuccess;
}

int unsubscribeCommand(QStringList args) {
    if (args.size() != 1) {
        return printUsage();
    }
    const QString& name = args.at(0);
    config::Change change;
    QJsonArray entries = config::subscriptions(change.document);
    const qsizetype at = config::indexOfSubscription(entries, name);
    if (at < 0) {
        return failWith(kExitUsage, QStringLiteral("No subscription named '%1'").arg(name));
    }
    entries.removeAt(at);
    change.document.insert(kSubscriptions, entries);
    if (!savedSubscriptions(change)) {
        return kExitFailed;
    }
    printResult({{QStringLiteral("unsubscribed"), name}},
                QStringLiteral("Unsubscribed '%1' (installed files stay on disk)\n").arg(name));
    return kExitSuccess;
}

int subscriptionsCommand(QStringList) {
    const QJsonArray entries = config::subscriptions(config::load());
    QString lines;
    for (const QJsonValue& entry : entries) {
        lines += subscriptionLine(entry.toObject());
    }
    if (entries.isEmpty()) {
        lines = QStringLiteral(
            "No subscriptions. Add one with:\n"
            "  quorvelle subscribe <server> <channel> --dir <path>\n");
    }
    printResult({{kSubscriptions, entries}}, lines);
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
