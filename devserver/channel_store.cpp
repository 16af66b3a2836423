#include "channel_store.h"

#include <QFile>

#include "data_folder.h"
#include "names.h"

namespace quorvelle::devserver {

std::optional<QString> ChannelStore::load() {
    for (const QString& file : folder_.entryList({"*.json"}, QDir::Files)) {
        const auto channel = readJson(folder_.filePath(file));
        if (!channel || !(*channel)["channel"].isString()) {
            return QString("cannot read the channel in '%1'").arg(folder_.filePath(file));
        }
        channels_.insert((*channel)["channel"].toString(), *channel);
    }
    return std::nullopt;
}

Reply ChannelStore::create(const QString& name, const QString& engine) {
    const std::lock_guard lock(mutex_);
    if (channels_.contains(name)) {
        return Refusal{409, QString("channel '%1' already exists").arg(name)};
    }
    return save({{"channel", name}, {"build", ""}, {"engine", engine}});
}

Reply ChannelStore::promote(const QString& name, const QString& build) {
    const std::lock_guard lock(mutex_);
    QJsonObject channel = channels_.value(name, {{"channel", name}, {"engine", "cargo"}});
    channel["build"] = build;
    channel["promoted_at"] = timestamp();
    return save(channel);
}

Reply ChannelStore::change(const QString& name, const QJsonObject& keys) {
    const std::lock_guard lock(mutex_);
    if (!channels_.contains(name)) {
        return Refusal{404, QString("no channel '%1'").arg(name)};
    }
    QJsonObject channel = channels_.value(name);
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        channel[key.key()] = key.value();
    }
    return save(channel);
}

Reply ChannelStore::remove(const QString& name) {
    const std::lock_guard lock(mutex_);
    if (!channels_.contains(name)) {
        return Refusal{404, QString("no channel '%1'").arg(name)};
    }
    if (!QFile::remove(folder_.filePath(*fileNameFor(name) + ".json"))) {
        return Refusal{500, QString("cannot delete channel '%1'").arg(name)};
    }
    channels_.remove(name);
    return QJsonObject{{"channel", name}};
}

Reply ChannelStore::save(const QJsonObject& channel) {
    const QString name = channel["channel"].toString();
    const auto file = fileNameFor(name);
    if (!file) {
        return Refusal{400, "the channel name is too long"};
    }
    if (!writeJson(folder_.filePath(*file + ".json"), channel)) {
        return Refusal{500, QString("cannot record channel '%1'").arg(name)};
    }
    channels_.insert(name, channel);
    return channel;
}

QList<QJsonObject> ChannelStore::list() const {
    const std::lock_guard lock(mutex_);
    return channels_.values();
}

std::optional<QJsonObject> ChannelStore::find(const QString& name) const {
    const std::lock_guard lock(mutex_);
    const auto found = channels_.find(name);
    return found == channels_.end() ? std::nullopt : std::optional(*found);
}

}  // namespace quorvelle::devserver
