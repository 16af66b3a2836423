#pragma once

namespace quorvelle {

/// From now on, memory that runs out ends the process with the error "out of memory" and
/// the exit code 2, on whichever thread: at once, as a kill does, for what has to be put
/// right on the way out may need memory as well. To be called once, from the main thread.
void endWhenOutOfMemory();

}  // namespace quorvelle
