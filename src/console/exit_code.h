#pragma once

namespace quorvelle {

/// What the process ends with, the same in text and in JSON mode.
/// Success includes results where nothing had to change.
inline constexpr int kExitSuccess = 0;
/// Usage shown, unknown command, bad arguments, no server configured.
inline constexpr int kExitUsage = 1;
/// A request failed, or the configuration could not be saved, or the output not written.
inline constexpr int kExitFailed = 2;
/// A build was downloaded but could not be put in place; `sync` alone returns it.
inline constexpr int kExitBlocked = 3;

}  // namespace quorvelle
