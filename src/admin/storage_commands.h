#pragma once

#include <QStringList>

namespace quorvelle {

/// `storage show|test|set|forget`: the bucket that a server keeps the builds of its tide
/// channels in. The handler tells the words apart by itself.
int storageCommand(QStringList args);

}  // namespace quorvelle
