#include "launch/target_list.h"

namespace quorvelle {

namespace {

const QString kPrimary = QStringLiteral("primary");

QString textOf(const QJsonValue& target, const char* key) {
    return target[QLatin1String(key)].toString();
}

bool hasLabel(const QJsonValue& target, const QString& label) {
    const QJsonValue found = target[u"label"];
    return found.isString() && found.toString() == label;
}

}  // namespace

std::optional<QJsonArray> targetsOf(const QJsonObject& channel) {
    const QJsonValue targets = channel.value(kTargetsKey);
    if (!targets.isArray() && !targets.isUndefined() && !targets.isNull()) {
        return std::nullopt;
    }
    return targets.toArray();
}

qsizetype indexOfTarget(const QJsonArray& targets, const QString& label) {
    for (qsizetype i = 0; i < targets.size(); ++i) {
        if (hasLabel(targets.at(i), label)) {
            return i;
        }
    }
    return -1;
}

QJsonArray withTarget(QJsonArray targets, const QString& label, const QString& exe,
                      const QString& args) {
    const qsizetype at = indexOfTarget(targets, label);
    QJsonObject target = at < 0 ? QJsonObject() : targets.at(at).toObject();
    target.insert(QStringLiteral("label"), label);
    target.insert(QStringLiteral("exe"), exe);
    target.insert(QStringLiteral("args"), args);
    target.insert(kPrimary, target.value(kPrimary).toBool());
    if (at < 0) {
        targets.append(target);
    } else {
        targets.replace(at, target);
    }
    return targets;
}

QJsonArray withOnlyPrimary(QJsonArray targets, qsizetype index) {
    for (qsizetype i = 0; i < targets.size(); ++i) {
        if (targets.at(i).isObject()) {
            QJsonObject target = targets.at(i).toObject();
            target.insert(kPrimary, i == index);
            targets.replace(i, target);
        }
    }
    return targets;
}

QJsonArray withoutTarget(QJsonArray targets, const QString& label) {
    for (qsizetype i = targets.size(); i-- > 0;) {
        if (hasLabel(targets.at(i), label)) {
            targets.removeAt(i);
        }
    }
    return targets;
}

QStringList targetLines(const QJsonArray& targets) {
    QStringList lines;
    for (const QJsonValue& target : targets) {
        const QString args = textOf(target, "args");
        lines << QStringLiteral("  ") + textOf(target, "label") + QStringLiteral("  ") +
                     textOf(target, "exe") + (args.isEmpty() ? QString() : u' ' + args) +
                     (target[u"primary"].toBool() ? QStringLiteral("  [primary]") : QString());
    }
    return lines;
}

}  // namespace quorvelle
