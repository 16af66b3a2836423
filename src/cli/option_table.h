#pragma once

#include <span>
#include <string_view>

/// What the usage lines do not say: what an option is for, and what is put in the place of
/// "<path>". The manual page and the completions read it; the program itself does not.

namespace quorvelle {

/// What a shell offers where a value is due.
enum class Takes { kAnything, kDirectory, kFile, kSubscription, kServer, kRole };

struct OptionText {
    /// As the usage lines show it, "--dir <path>"; behind a command's words where that
    /// command means something else by it, "sync --server <url>".
    std::string_view option = {};
    /// One phrase, no full stop.
    std::string_view text = {};
    Takes takes = Takes::kAnything;
};

struct PlaceMeaning {
    /// "<dir>", or with a command's words before it, "unsubscribe <name>".
    std::string_view place = {};
    Takes takes = Takes::kAnything;
};

/// Every option of the command table, and those of all commands.
std::span<const OptionText> optionTexts();

/// The places outside options that take something that a shell can offer.
std::span<const PlaceMeaning> placeMeanings();

/// What an option, as the usage lines show it, is for in the command of these words; null
/// where no one wrote it down.
const OptionText* findOptionText(std::string_view words, std::string_view option);

/// What is put in a place outside options, in the command of these words.
Takes findPlaceMeaning(std::string_view words, std::string_view place);

}  // namespace quorvelle
