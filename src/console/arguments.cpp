#include "console/arguments.h"

namespace quorvelle {

QString takeOption(QStringList& args, const QString& name, const QString& fallback) {
    const qsizetype at = args.indexOf(name);
    if (at < 0 || at + 1 >= args.size()) {
        return fallback;
    }
    const QString value = args.at(at + 1);
    args.remove(at, 2);
    return value;
}

std::optional<QString> takeGiven(QStringList& args, const QString& name) {
    const qsizetype before = args.size();
    const QString value = takeOption(args, name);
    return args.size() == before ? std::nullopt : std::optional(value);
}

bool isEmptyName(const std::optional<QString>& name) {
    return name && name->isEmpty();
}

bool areNames(const QStringList& args, qsizetype count) {
    return args.size() == count && !args.contains(QString());
}

bool hasStrayOption(const QStringList& args, const QStringList& own) {
    for (qsizetype at = 0; at < args.size(); ++at) {
        const QString& word = args.at(at);
        const bool isCut = word == u"--server" && at + 1 == args.size();
        if (word == u"--token" || own.contains(word)) {
            ++at;
        } else if (word.startsWith(QStringLiteral("--")) && !isCut) {
            return true;
        }
    }
    return false;
}

bool takeFlag(QStringList& args, const QString& name) {
    return args.removeAll(name) > 0;
}

}  // namespace quorvelle
