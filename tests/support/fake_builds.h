#pragma once

#include <QByteArray>
#include <QString>
#include <string>
#include <vector>

#include "support/fake_server.h"

namespace quorvelle::testing {

struct BuildFile {
    QString path;
    QByteArray bytes;
};

/// The target under which a file of a build is asked for.
std::string fileTarget(const QString& build, const QString& path);

/// Makes the server carry the build in the channel: the channel's reply, the build's
/// manifest in the given order and every file. Publishing again moves the channel.
void publish(FakeServer& server, const QString& channel, const QString& build,
             const std::vector<BuildFile>& files);

/// An answer of 200 whose connection ends after half of the promised body.
FakeServer::Answer truncatedAnswer();

}  // namespace quorvelle::testing
