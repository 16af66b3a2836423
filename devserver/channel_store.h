#pragma once

#include <QDir>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <mutex>
#include <optional>

#include "reply.h"

namespace quorvelle::devserver {

/// The channels on disk, one "<name>.json" each: an object with "channel",
/// "build" (empty before the first promotion), "engine" ("cargo" or "tide") and,
/// with a build, "promoted_at"; "public" and "launch_targets" once they were set. Any
/// thread may call any function.
class ChannelStore {
public:
    explicit ChannelStore(const QDir& place) : folder(place) {}

    /// Takes up the channels of an earlier run. A channel that cannot be read
    /// comes back as a sentence.
    std::optional<QString> load();

    /// Adds a channel without a build. Its engine stays for good.
    Reply create(const QString& name, const QString& engine);

    /// Points a channel at a build the caller knows to exist. A new one gets the
    /// engine "cargo".
    Reply promote(const QString& name, const QString& build);

    /// Sets the given keys of a channel.
    Reply change(const QString& name, const QJsonObject& keys);

    /// Forgets a channel. Its builds stay.
    Reply remove(const QString& name);

    /// The channels by name.
    QList<QJsonObject> list() const;
    std::optional<QJsonObject> find(const QString& name) const;

private:
    Reply save(const QJsonObject& channel);

    const QDir folder;
    mutable std::mutex mutex;
    QMap<QString, QJsonObject> channels;
};

}  // namespace quorvelle::devserver
