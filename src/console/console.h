#pragma once

#include <cstdio>

namespace quorvelle {

/// Makes the process fit to be a well-behaved console program, before anything
/// is printed: UTF-8 output on consoles that have code pages, failed writes
/// reported as errors instead of ending the process, and no messages of the
/// framework between our own. What it changes of a console is as before when the process
/// ends, by Ctrl-C too.
void prepareConsole();

/// Whether a person sees what goes to the stream (or types what comes from it), not a
/// file, a pipe or another program.
bool isTerminal(std::FILE* stream);

/// Of a terminal: whether it obeys control sequences that draw a line again.
bool obeysSequences(std::FILE* stream);

/// What takes a line away that the cursor stands in.
inline constexpr char kEraseLine[] = "\r\x1B[J";

/// Whether standard error is sent kEraseLine when Ctrl-C, or another request to end, ends
/// the process.
void eraseAtInterrupt(bool on);

/// Of a terminal: the columns of a line, 80 where it does not tell.
int columnsOf(std::FILE* stream);

}  // namespace quorvelle
