#pragma once

#include <QString>

namespace quorvelle {

/// The answer, given with the command.
inline constexpr char kYesOption[] = "--yes";

/// From here on no question is asked: the person gave the answer.
void setAnsweredYes(bool yes);

/// Asks the person at a terminal a question that "y" or "yes" agrees to, and waits for the
/// answer; anything else is a no, and said to be one. Where nobody can be asked (standard
/// input or standard output is no terminal, or JSON mode is on) the command itself is the
/// answer. Main thread only.
bool confirmed(const QString& question);

}  // namespace quorvelle
