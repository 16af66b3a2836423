#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "support/notation.h"
#include "support/process_runner.h"

/// What tests of the whole program type and expect, and runs under conditions in which
/// the system refuses what the program wants.

namespace quorvelle::testing {

/// The object that the text spells; fails the test when it spells none.
QJsonObject object(const QString& text);

/// Checks both streams and the exit code of a finished run.
void expectOutcome(const Outcome& got, int code, const QString& out, const QString& err = {});

/// Runs the command in both modes and expects nothing but the error: as a line on standard
/// error in text mode, as one object on standard output in JSON mode.
void expectError(const Sandbox& sandbox, const QStringList& words, int code,
                 const QString& message);

/// Runs the command in both modes and expects the usage text and exit code 1.
void expectUsage(const Sandbox& sandbox, const QStringList& words);

/// A run that obeys file permissions, also when the tests run as root.
Outcome runObeyingPermissions(const Sandbox& sandbox, const QStringList& words);

}  // namespace quorvelle::testing
