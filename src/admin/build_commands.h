#pragma once

#include <QStringList>

/// The builds that a server keeps. Handlers as the command table wants them.

namespace quorvelle {

/// `builds`: every build, its size and the channels that point at it.
int buildsCommand(QStringList args);

/// `build <id>`: one build with its files.
int buildCommand(QStringList args);

/// `build delete <id>`.
int buildDeleteCommand(QStringList args);

/// `build disable <id>`: the build can no longer be promoted.
int buildDisableCommand(QStringList args);

/// `build enable <id>`.
int buildEnableCommand(QStringList args);

}  // namespace quorvelle
