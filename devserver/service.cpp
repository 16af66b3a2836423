#include "service.h"

namespace quorvelle::devserver {

Service::Service(const QString& dataDir)
    : folder(dataDir),
      builds(folder.dir().filePath(QStringLiteral("builds"))),
      channels(folder.dir().filePath(QStringLiteral("channels"))),
      people(folder.dir().filePath(QStringLiteral("people.json"))),
      settings(folder.dir().filePath(QStringLiteral("settings.json"))),
      tide(folder, builds, signer) {}

std::optional<QString> Service::open(const QStringList& tideChannels) {
    if (auto error = folder.open()) {
        return error;
    }
    for (auto& error : {builds.load(), channels.load(), people.load(), settings.load(),
                        signer.load(folder.dir().filePath(QStringLiteral("secrets.json")))}) {
        if (error) {
            return error;
        }
    }
    for (const QString& name : tideChannels) {
        const auto known = channels.find(name);
        if (known && (*known)[u"engine"] != QStringLiteral("tide")) {
            return QStringLiteral("channel '%1' exists and is no tide channel").arg(name);
        }
        const Reply reply = known ? Reply(*known) : channels.create(name, QStringLiteral("tide"));
        if (const auto* refusal = std::get_if<Refusal>(&reply)) {
            return refusal->message;
        }
    }
    return std::nullopt;
}

}  // namespace quorvelle::devserver
