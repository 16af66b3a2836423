#pragma once

#include <string>

namespace tide::fuzz {

/// What bytes from outside may do to the engine's parsers. Each function feeds the bytes
/// to one of them and returns whether they were accepted. It ends the process when the
/// parser breaks a promise that its users build on. The fuzzers call them with bytes of
/// their own making, the tests with the seeds.
using Target = bool (*)(const std::string& bytes);

/// A sync descriptor.
bool runDescriptor(const std::string& json);

/// A manifest for the channel "app". When the first line is "signed ..." the rest of that
/// line is taken as the signature of what follows, under the public key of the seeds.
bool runManifest(const std::string& body);

/// A chunk object: a line with its id, then the bytes as stored.
bool runChunk(const std::string& object);

/// A remembered chunk list of the install directory "/games/app".
bool runKnownCuts(const std::string& list);

/// A page of an object listing; one without an entry and without a next page counts as
/// refused.
bool runListPage(const std::string& xml);

}  // namespace tide::fuzz
