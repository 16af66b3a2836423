#pragma once

#include <map>
#include <string>
#include <vector>

#include "console/command.h"

namespace quorvelle {

/// A word that may follow on a command line, with a phrase that says what it does; words
/// that open a group of commands, literal arguments and options have none.
struct NextWord {
    std::string word;
    std::string summary = {};
};

/// What may follow each sequence of literal words, "quorvelle" first: "quorvelle config"
/// -> get, list, set. Sequences and words are in alphabetical order, options behind the
/// other words; every sequence offers "--json".
using NextWords = std::map<std::string, std::vector<NextWord>>;

/// Reads them from the rows' words and usage lines.
NextWords nextWords(CommandTable table);

}  // namespace quorvelle
