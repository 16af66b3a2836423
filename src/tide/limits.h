#pragma once

#include <cstddef>
#include <cstdint>

namespace tide {

/// Bounds on input, in bytes, far above anything a publisher makes. A reply that grows
/// beyond its bound ends the transfer as failed, so a lying server cannot fill memory.

/// A chunk object as stored, and the content that its zstd frame declares.
inline constexpr std::uint64_t kMaxChunkBytes = std::uint64_t{64} << 20;
/// A manifest, a signature, and every other object or URL.
inline constexpr std::uint64_t kMaxBodyBytes = std::uint64_t{256} << 20;
/// All headers and trailers of one reply, its interim answers included.
inline constexpr std::uint64_t kMaxHeaderBytes = std::uint64_t{1} << 20;
/// One page of an object listing.
inline constexpr std::uint64_t kMaxListPageBytes = std::uint64_t{16} << 20;

/// Values of a JSON text; each takes about a hundred bytes of memory once it is read.
inline constexpr std::size_t kMaxDescriptorValues = 8'000'000;
inline constexpr std::size_t kMaxManifestValues = 20'000'000;

}  // namespace tide
