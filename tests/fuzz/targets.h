#pragma once

#include <cstddef>
#include <cstdint>

namespace tide::fuzz {

/// What bytes from outside may do to the engine's parsers. Each function feeds the bytes
/// to one of them and returns 1 when they were accepted and 0 when they were refused. It
/// ends the process when the parser breaks a promise that its users build on. The fuzzers
/// call them with bytes of their own making, the tests with the seeds.
using Target = int (*)(const std::uint8_t* bytes, std::size_t size);

/// A sync descriptor.
int runDescriptor(const std::uint8_t* bytes, std::size_t size);

/// A manifest for the channel "app". When the first line is "signed ..." the rest of that
/// line is taken as the signature of what follows, under the public key of the seeds.
int runManifest(const std::uint8_t* bytes, std::size_t size);

/// A chunk object: a line with its id, then the bytes as stored.
int runChunk(const std::uint8_t* bytes, std::size_t size);

/// A remembered chunk list of the install directory "/games/app".
int runKnownCuts(const std::uint8_t* bytes, std::size_t size);

/// A page of an object listing; one without an entry and without a next page counts as
/// refused.
int runListPage(const std::uint8_t* bytes, std::size_t size);

}  // namespace tide::fuzz
