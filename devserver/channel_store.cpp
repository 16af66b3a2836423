#include "channel_store.h"

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
    const QString engine = channels_.value(name).value("engine").toString("cargo");
    return save(
        {{"channel", name}, {"build", build}, {"engine", engine}, {"promoted_at", timestamp()}});
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
