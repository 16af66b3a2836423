#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tide {

/// A manifest's text taken apart.
struct ManifestPieces {
    /// The document with an empty list of files.
    std::string head;
    /// What stands in that list, one text an entry, in its order; parts of the text given.
    std::vector<std::string_view> files;
};

/// Takes a manifest's JSON text apart at the entries of "files", so that one at a time can be
/// read: as one tree of values it takes ten times the memory of the text. This finds out where
/// the entries begin and end, and judges nothing: when the head and every entry are read
/// without an error, each to its end, the text means what they mean together. Nothing where
/// that is not certain of this text (comments, a name with escapes, no such list or two of
/// them, very deep nesting): then it has to be read as a whole.
std::optional<ManifestPieces> takeApart(std::string_view json);

}  // namespace tide
