#pragma once

#include <sys/types.h>

#include <cstddef>

/// Open files of POSIX, by their descriptors.

namespace files::posix {

/// What a file that its owner alone may use is created with.
inline constexpr mode_t kOwnerOnlyMode = 0600;

/// Writes all bytes, however many calls that takes. False, with errno set, when one fails.
bool writeAll(int descriptor, const char* bytes, std::size_t size);

/// Waits until what was written is on the disk. A file that knows no flush (a pipe, a
/// device, some file systems) counts as done.
bool flush(int descriptor);

/// Lets what was written begin its way to the disk, without waiting for it.
void beginFlush(int descriptor);

}  // namespace files::posix
