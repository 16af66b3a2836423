#include "admin/commands.h"
#include "cli/commands.h"
#include "onboarding/storage_init_command.h"

namespace quorvelle {

namespace {

/// Where the word stands that tells the storage commands apart: the first argument that is
/// neither an option nor the value of one. -1 without one.
qsizetype placeOfWord(const QStringList& args) {
    static const QStringList kWithValue{
        QStringLiteral("--server"),        QStringLiteral("--endpoint"),
        QStringLiteral("--bucket"),        QStringLiteral("--access-key"),
        QStringLiteral("--secret-key"),    QStringLiteral("--region"),
        QStringLiteral("--token"),         QStringLiteral("--jurisdiction"),
        QStringLiteral("--account-id"),    QStringLiteral("--token-file"),
        QStringLiteral("--ci-secret-file")};
    for (qsizetype at = 0; at < args.size(); ++at) {
        if (kWithValue.contains(args.at(at))) {
            ++at;
        } else if (!args.at(at).startsWith(QStringLiteral("--"))) {
            return at;
        }
    }
    return -1;
}

}  // namespace

int storageCommand(QStringList args) {
    const qsizetype at = placeOfWord(args);
    if (at >= 0 && args.at(at) == u"init") {
        args.removeAt(at);
        return storageInitCommand(std::move(args));
    }
    return storageSettingsCommand(std::move(args));
}

}  // namespace quorvelle
