#pragma once

#include <QStringList>

/// The encrypted backups that a server makes of itself. Handlers as the command table
/// wants them.

namespace quorvelle {

/// `backup`: starts one now.
int backupCommand(QStringList args);

/// `backups`: where they go, when they run, what the last one did, and the snapshots.
int backupsCommand(QStringList args);

/// `backup init`: sets the bucket up, the shared one or one of their own, and shows the
/// encryption key, once.
int backupInitCommand(QStringList args);

/// `backup schedule`: the daily time, and how many snapshots are kept.
int backupScheduleCommand(QStringList args);

/// `backup forget`: the server forgets the bucket; what is in it stays.
int backupForgetCommand(QStringList args);

}  // namespace quorvelle
