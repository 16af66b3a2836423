#pragma once

#include <QString>

#include "console/command.h"

namespace quorvelle {

/// In the order in which they are shown.
inline constexpr Group kGroups[] = {Group::kInstalls, Group::kServers, Group::kPublishing,
                                    Group::kPeople,   Group::kService, Group::kProgram};

/// "Installs on this machine"
QString groupTitle(Group group);

/// For a person who wants to know what there is: one line a command, by group, and how to
/// go on from there. Fits 80 columns.
QString overviewText(CommandTable table);

}  // namespace quorvelle
