#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tide {

/// The search for the end of a chunk: a rolling hash takes in one byte at a time (twice
/// the old hash plus the byte's gear value, modulo 2^64), and the chunk ends after the
/// first byte that leaves all bits of a mask zero.

/// Takes bytes into `hash`, up to and including the first that leaves `hash & mask`
/// zero. Returns how many bytes that were; 0 when no byte did and all were taken in.
/// After a hit `hash` is unspecified, since a new chunk begins with the hash 0.
using CutScan = std::size_t (*)(std::string_view bytes, std::uint64_t mask, std::uint64_t& hash);

/// The plain search, and the yardstick of the other.
std::size_t scanByteByByte(std::string_view bytes, std::uint64_t mask, std::uint64_t& hash);

/// The same cuts sooner. A byte's share of the hash is shifted out by the 64 bytes after
/// it, so the search may begin anywhere once 64 bytes before are taken in: four stretches
/// are searched in step, which keeps a processor busy that would else wait for each sum.
std::size_t scanInLanes(std::string_view bytes, std::uint64_t mask, std::uint64_t& hash);

}  // namespace tide
