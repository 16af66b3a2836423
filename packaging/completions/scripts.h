#pragma once

#include <string>

#include "next_words.h"

/// The files for the shells and for man, as text that ends with a line end.

namespace quorvelle {

/// To be sourced, or put among bash's completions.
std::string bashScript(const NextWords& words);

/// To be put into a folder of zsh's fpath as "_quorvelle".
std::string zshScript(const NextWords& words);

/// To be dot-sourced in a PowerShell profile.
std::string powerShellScript(const NextWords& words);

/// The manual page, section 1.
std::string manualPage(CommandTable table, const std::string& version);

}  // namespace quorvelle
