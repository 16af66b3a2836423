#pragma once

#include <QString>
#include <QStringList>
#include <mutex>
#include <optional>

#include "build_store.h"
#include "channel_store.h"
#include "data_folder.h"
#include "document.h"
#include "people.h"
#include "signing.h"
#include "tide_publisher.h"

namespace quorvelle::devserver {

/// All that lies in the data folder, and what the endpoints work on. It must outlive the
/// router.
struct Service {
    explicit Service(const QString& dataDir);

    /// Takes the data folder and what an earlier run left in it, then creates the tide
    /// channels that do not exist yet. What stands in the way comes back as a sentence.
    std::optional<QString> open(const QStringList& tideChannels);

    DataFolder folder;
    BuildStore builds;
    ChannelStore channels;
    People people;
    /// "license", "backups", "storage", "sso" and "sso_mapping", each once it was set.
    Document settings;
    Signer signer;
    TidePublisher tide;
    /// Held while a channel is promoted, so that the build it names and the manifest
    /// that is published for it are of the same promotion.
    std::mutex promotions;
};

}  // namespace quorvelle::devserver
