#include "config/subscription.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace quorvelle {

namespace {

bool isPlainNumber(const QString& text) {
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

}  // namespace

std::optional<int> parseInterval(const QString& text) {
    const QString value = text.trimmed().toLower();
    if (value == u"manual" || value == u"off" || value == u"0") {
        return 0;
    }
    if (value == u"default") {
        return -1;
    }
    bool fits = false;
    const int seconds = value.toInt(&fits);
    if (!isPlainNumber(value) || !fits || seconds < 1) {
        return std::nullopt;
    }
    return seconds;
}

std::optional<int> parseSelfHeal(const QString& text) {
    const QString value = text.trimmed().toLower();
    if (value == u"none") {
        return 0;
    }
    if (value == u"quick") {
        return 1;
    }
    if (value == u"full") {
        return 2;
    }
    if (value == u"default") {
        return -1;
    }
    return std::nullopt;
}

QString intervalText(int seconds) {
    if (seconds < 0) {
        return QStringLiteral("the global default");
    }
    if (seconds == 0) {
        return QStringLiteral("manual (no auto-sync)");
    }
    return QStringLiteral("every %1s").arg(seconds);
}

QString selfHealText(int mode) {
    switch (mode) {
        case 0:
            return QStringLiteral("none");
        case 1:
            return QStringLiteral("quick");
        case 2:
            return QStringLiteral("full");
        default:
            return QStringLiteral("default");
    }
}

QString subscriptionLine(const QJsonObject& subscription) {
    const auto text = [&](const char* key) {
        return subscription.value(QLatin1String(key)).toString();
    };
    const QString line = QStringLiteral("%1: %2 @ %3 -> %4  (%5, self-heal %6)")
                             .arg(text("name"), text("channel"), text("server"),
                                  QDir::toNativeSeparators(text("dir")),
                                  intervalText(subscription.value(u"interval_seconds").toInt(-1)),
                                  selfHealText(subscription.value(u"self_heal").toInt(-1)));
    const bool managed = subscription.value(u"managed").toBool();
    return line + (managed ? QStringLiteral("  [managed]\n") : QStringLiteral("\n"));
}

QString absolutePath(const QString& path) {
    return QFileInfo(path).absoluteFilePath();
}

}  // namespace quorvelle
