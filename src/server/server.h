#pragma once

#include <QString>

namespace quorvelle {

/// A server that a command talks to, and the token that its requests carry. Made once,
/// when the command line names the server or the configuration does.
struct Server {
    /// Base URL without "/" at its end.
    QString url = {};
    /// Bearer token; empty sends none.
    QString token = {};
};

}  // namespace quorvelle
