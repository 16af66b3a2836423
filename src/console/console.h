#pragma once

namespace quorvelle {

/// Makes the process fit to be a well-behaved console program, before anything
/// is printed: UTF-8 output on consoles that have code pages, failed writes
/// reported as errors instead of ending the process, and no messages of the
/// framework between our own.
void prepareConsole();

}  // namespace quorvelle
