#pragma once

#include <cstdio>

namespace quorvelle {

/// Makes the process fit to be a well-behaved console program, before anything
/// is printed: UTF-8 output on consoles that have code pages, failed writes
/// reported as errors instead of ending the process, and no messages of the
/// framework between our own.
void prepareConsole();

/// Whether a person sees what goes to the stream (or types what comes from it), not a
/// file, a pipe or another program.
bool isTerminal(std::FILE* stream);

}  // namespace quorvelle
