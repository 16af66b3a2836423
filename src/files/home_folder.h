#pragma once

namespace quorvelle {

/// Whether this user's home folder is known. Where the environment does not name one (a
/// system's service), the user database does, and HOME is set to it for this process and
/// those that it starts, so that everybody means the same folder.
bool findHomeFolder();

}  // namespace quorvelle
