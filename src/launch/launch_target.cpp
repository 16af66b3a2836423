#include "launch/launch_target.h"

#include <QProcess>

namespace quorvelle {

namespace {

constexpr QChar kUnitSeparator(0x1F);

QString textOf(const QJsonObject& target, const char* key) {
    return target.value(QLatin1String(key)).toString();
}

QStringList splitOf(const QJsonObject& target, const char* key) {
    return QProcess::splitCommand(textOf(target, key));
}

QJsonObject mergedAdminTarget(const QJsonObject& target, const QJsonObject& overrides) {
    const QString key = adminTargetKey(target);
    const QJsonObject adjusted = overrides.value(key).toObject();
    return {{QStringLiteral("source"), QStringLiteral("admin")},
            {QStringLiteral("akey"), key},
            {QStringLiteral("label"), textOf(target, "label")},
            {QStringLiteral("exe"), textOf(target, "exe")},
            {QStringLiteral("working_dir"), textOf(target, "working_dir")},
            {QStringLiteral("admin_args"), textOf(target, "args")},
            {QStringLiteral("pre_args"), textOf(adjusted, "pre_args")},
            {QStringLiteral("post_args"), textOf(adjusted, "post_args")},
            {QStringLiteral("ignore_server"), adjusted.value(u"ignore_server").toBool()},
            {QStringLiteral("favorite"), adjusted.value(u"favorite").toBool()},
            {QStringLiteral("primary"), target.value(u"primary").toBool()}};
}

}  // namespace

QString adminTargetKey(const QJsonObject& target) {
    return textOf(target, "label") + kUnitSeparator + textOf(target, "exe");
}

QJsonArray mergedTargets(const QJsonArray& adminTargets, const QJsonObject& subscription) {
    const QJsonObject overrides = subscription.value(u"admin_overrides").toObject();
    QJsonArray merged;
    for (const QJsonValue& target : adminTargets) {
        if (target.isObject()) {
            merged.append(mergedAdminTarget(target.toObject(), overrides));
        }
    }
    const QJsonArray own = subscription.value(u"launch_targets").toArray();
    for (qsizetype i = 0; i < own.size(); ++i) {
        if (!own.at(i).isObject()) {
            continue;
        }
        QJsonObject target = own.at(i).toObject();
        target.insert(QStringLiteral("source"), QStringLiteral("user"));
        target.insert(QStringLiteral("uindex"), static_cast<qint64>(i));
        merged.append(target);
    }
    return merged;
}

Selection selectTarget(const QJsonArray& targets, const QString& subscription,
                       const QString& label) {
    if (targets.isEmpty()) {
        return {.error = QStringLiteral("'%1' has no launch targets (the channel admin defines "
                                        "them: quorvelle channel launch add ...)")
                             .arg(subscription)};
    }
    for (const QJsonValue& entry : targets) {
        const QJsonObject target = entry.toObject();
        const bool chosen =
            label.isEmpty() ? target.value(u"primary").toBool() : textOf(target, "label") == label;
        if (chosen) {
            return {.target = target};
        }
    }
    if (!label.isEmpty()) {
        return {.error = QStringLiteral("no launch target labelled '%1'").arg(label)};
    }
    if (targets.size() == 1) {
        return {.target = targets.first().toObject()};
    }
    return {.error = QStringLiteral("'%1' has %2 launch targets and no primary - pick one with "
                                    "--target <label>")
                         .arg(subscription, QString::number(targets.size()))};
}

QStringList targetArguments(const QJsonObject& target) {
    QStringList arguments = splitOf(target, target.contains(u"pre_args") ? "pre_args" : "args");
    if (!target.value(u"ignore_server").toBool()) {
        arguments += splitOf(target, "admin_args");
    }
    return arguments + splitOf(target, "post_args");
}

}  // namespace quorvelle
