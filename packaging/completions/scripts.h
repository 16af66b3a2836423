#pragma once

#include <QString>

#include "completion_tree.h"

/// The completions. Each is a script with "@NEXT@" and other marks where the tree goes; the
/// four walk it alike: options are offered behind a "-", and without one where no other word
/// is due; names of subscriptions and servers come from "quorvelle subscriptions --json",
/// which asks no network.

namespace quorvelle {

enum class Shell { kBash, kZsh, kFish, kPowerShell };

/// The script for a shell with the tree in it.
QString filledIn(QString script, Shell shell, const CompletionTree& tree);

}  // namespace quorvelle
