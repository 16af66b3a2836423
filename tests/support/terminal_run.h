#pragma once

#include <unistd.h>

#include <vector>

#include "support/process_runner.h"

namespace quorvelle::testing {

/// What happens at a terminal during a run.
struct AtTerminal {
    /// The value of TERM. The terminal has 24 rows of 80 columns.
    QString kind = QStringLiteral("dumb");
    /// What the person types.
    QByteArray typed = {};
    /// The text upon which the signal is sent, or none.
    QByteArray awaited = {};
    int signal = 0;
};

/// A run of which some streams, named by their descriptors, are a terminal. What is written
/// to that comes back as standard error, each line with a plain line end.
Outcome runAtTerminal(const Sandbox& sandbox, const QStringList& words,
                      const std::vector<int>& streams = {STDERR_FILENO},
                      const AtTerminal& there = {});

/// The rows that such a terminal shows in the end. It obeys what the program may send, a
/// carriage return and "erase all below"; any other sequence fails the test.
QStringList screenAfter(const QString& written);

}  // namespace quorvelle::testing
