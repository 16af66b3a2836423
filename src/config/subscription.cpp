#include "config/subscription.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "config/json_number.h"

namespace quorvelle {

namespace {

struct SelfHealWord {
    SelfHeal mode;
    const char* word;
};

/// The default comes last.
constexpr SelfHealWord kSelfHealWords[] = {{SelfHeal::kNone, "none"},
                                           {SelfHeal::kQuick, "quick"},
                                           {SelfHeal::kFull, "full"},
                                           {SelfHeal::kDefault, "default"}};

/// The word of a stored number; that of the default for one without a meaning.
const SelfHealWord& selfHealWord(qint64 stored) {
    const auto* known = std::find_if(
        std::begin(kSelfHealWords), std::prev(std::end(kSelfHealWords)),
        [stored](const SelfHealWord& entry) { return static_cast<int>(entry.mode) == stored; });
    return *known;
}

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

SelfHeal selfHealOf(const QJsonObject& subscription) {
    return selfHealWord(wholeNumberIn(subscription.value(u"self_heal"),
                                      static_cast<qint64>(SelfHeal::kDefault)))
        .mode;
}

std::optional<int> parseSelfHeal(const QString& text) {
    const QString value = text.trimmed().toLower();
    for (const auto& [mode, word] : kSelfHealWords) {
        if (value == QLatin1String(word)) {
            return static_cast<int>(mode);
        }
    }
    return std::nullopt;
}

QString intervalText(qint64 seconds) {
    if (seconds < 0) {
        return QStringLiteral("the global default");
    }
    if (seconds == 0) {
        return QStringLiteral("manual (no auto-sync)");
    }
    return QStringLiteral("every %1s").arg(seconds);
}

QString selfHealText(int mode) {
    return QLatin1String(selfHealWord(mode).word);
}

QString subscriptionLine(const QJsonObject& subscription) {
    const auto text = [&](const char* key) {
        return subscription.value(QLatin1String(key)).toString();
    };
    const QString line =
        QStringLiteral("%1: %2 @ %3 -> %4  (%5, self-heal %6)")
            .arg(text("name"), text("channel"), text("server"),
                 QDir::toNativeSeparators(text("dir")),
                 intervalText(wholeNumberIn(subscription.value(u"interval_seconds"), -1)),
                 selfHealText(static_cast<int>(selfHealOf(subscription))));
    const bool managed = subscription.value(u"managed").toBool();
    return managed ? line + QStringLiteral("  [managed]") : line;
}

QString absolutePath(const QString& path) {
    return QFileInfo(path).absoluteFilePath();
}

}  // namespace quorvelle
