#include "cli/commands.h"

#include <QDir>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/subscription.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/next_step.h"

namespace quorvelle {

namespace {

const QStringList kKnownKeys{QStringLiteral("server"), QStringLiteral("token")};

bool isLegacyKey(const QString& key) {
    return key == u"channel" || key == u"download-dir";
}

int list() {
    const QJsonObject document = config::load();
    if (jsonMode()) {
        printJson(document);
        return kExitSuccess;
    }
    const bool hasToken = !document.value(u"token").toString().isEmpty();
    Lines text = lines(QStringLiteral("server = %1\ntoken = %2\n\nSubscriptions:"),
                       {document.value(u"server").toString(QStringLiteral("(not set)")),
                        hasToken ? QStringLiteral("(set)") : QStringLiteral("(not set)")});
    const QJsonArray subscriptions = config::subscriptions(document);
    for (const QJsonValue& subscription : subscriptions) {
        text << QStringLiteral("  ") + subscriptionLine(subscription.toObject());
    }
    if (subscriptions.isEmpty()) {
        text << QStringLiteral("  (none)");
    }
    print(text << QString()
               << QStringLiteral("Config file: ") + QDir::toNativeSeparators(config::path()));
    return kExitSuccess;
}

int get(const QString& key) {
    const QJsonObject document = config::load();
    if (!document.contains(key)) {
        return failWith(kExitUsage, key + QStringLiteral(" is not set"));
    }
    const QString value = document.value(key).toString();
    printValue(key, value);
    return kExitSuccess;
}

int set(const QString& key, const QString& value) {
    const auto outcome = config::change([&](QJsonObject& document) {
        document.insert(key, value);
        return true;
    });
    if (outcome != config::Changed::kSaved) {
        return failWith(kExitFailed, QStringLiteral("Could not write ") +
                                         QDir::toNativeSeparators(config::path()));
    }
    printResult({{key, value}}, key + QStringLiteral(" = ") + value + u'\n');
    if (key == u"server") {
        printNote(addressHint(value));
    }
    return kExitSuccess;
}

}  // namespace

int configCommand(QStringList args) {
    const QString action = args.value(0, QStringLiteral("list"));
    if (action == u"list") {
        return list();
    }
    const bool isGet = action == u"get";
    const QString key = args.value(1);
    if ((isGet || action == u"set") && isLegacyKey(key)) {
        return failWith(
            kExitUsage,
            QStringLiteral("'%1' moved into subscriptions - use 'quorvelle subscribe' / "
                           "'quorvelle subscriptions'")
                .arg(key));
    }
    const bool complete = isGet ? args.size() == 2 : action == u"set" && args.size() == 3;
    if (!complete) {
        return printUsage();
    }
    if (!kKnownKeys.contains(key)) {
        return failWith(kExitUsage, QStringLiteral("Unknown key '%1'. Known keys: %2")
                                        .arg(key, kKnownKeys.join(QStringLiteral(", "))));
    }
    return isGet ? get(key) : set(key, args.at(2));
}

}  // namespace quorvelle
