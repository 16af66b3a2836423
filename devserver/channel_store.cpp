#include "channel_store.h"

#include <QFile>

#include "data_folder.h"

namespace quorvelle::devserver {

std::optional<QString> ChannelStore::load() {
    for (const QString& file : folder.entryList({QStringLiteral("*.json")}, QDir::Files)) {
        const auto channel = readJson(folder.filePath(file));
        if (!channel || !(*channel)[u"channel"].isString()) {
            return QStringLiteral("cannot read the channel in '%1'").arg(folder.filePath(file));
        }
        channels.insert((*channel)[u"channel"].toString(), *channel);
    }
    return std::nullopt;
}

Reply ChannelStore::create(const QString& name, const QString& engine) {
    const std::lock_guard lock(mutex);
    if (channels.contains(name)) {
        return Refusal{409, QStringLiteral("channel '%1' already exists").arg(name)};
    }
    return save({{QStringLiteral("channel"), name},
                 {QStringLiteral("build"), QStringLiteral("")},
                 {QStringLiteral("engine"), engine}});
}

Reply ChannelStore::promote(const QString& name, const QString& build) {
    const std::lock_guard lock(mutex);
    QJsonObject channel = channels.value(
        name,
        {{QStringLiteral("channel"), name}, {QStringLiteral("engine"), QStringLiteral("cargo")}});
    channel[u"build"] = build;
    channel[u"promoted_at"] = timestamp();
    return save(channel);
}

Reply ChannelStore::change(const QString& name, const QJsonObject& keys) {
    const std::lock_guard lock(mutex);
    if (!channels.contains(name)) {
        return unknown(QStringLiteral("channel"), name);
    }
    QJsonObject channel = channels.value(name);
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        channel[key.key()] = key.value();
    }
    return save(channel);
}

Reply ChannelStore::remove(const QString& name) {
    const std::lock_guard lock(mutex);
    if (!channels.contains(name)) {
        return unknown(QStringLiteral("channel"), name);
    }
    if (!QFile::remove(folder.filePath(*fileNameFor(name) + QStringLiteral(".json")))) {
        return Refusal{500, QStringLiteral("cannot delete channel '%1'").arg(name)};
    }
    channels.remove(name);
    return QJsonObject{{QStringLiteral("channel"), name}};
}

Reply ChannelStore::save(const QJsonObject& channel) {
    const QString name = channel[u"channel"].toString();
    const auto file = fileNameFor(name);
    if (!file) {
        return Refusal{400, QStringLiteral("the channel name is too long")};
    }
    if (!writeJson(folder.filePath(*file + QStringLiteral(".json")), channel)) {
        return Refusal{500, QStringLiteral("cannot record channel '%1'").arg(name)};
    }
    channels.insert(name, channel);
    return channel;
}

QList<QJsonObject> ChannelStore::list() const {
    const std::lock_guard lock(mutex);
    return channels.values();
}

std::optional<QJsonObject> ChannelStore::find(const QString& name) const {
    const std::lock_guard lock(mutex);
    const auto found = channels.find(name);
    return found == channels.end() ? std::nullopt : std::optional(*found);
}

}  // namespace quorvelle::devserver
