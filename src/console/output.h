#pragma once

#include <QJsonObject>
#include <QString>

/// Everything the program says goes through here, in UTF-8; no other file writes
/// to standard output or standard error. Main thread only.

namespace quorvelle {

/// JSON mode: a successful command prints one compact JSON object, an error is
/// printed as {"error": text}. Set once at start, from the switch "--json".
void setJsonMode(bool on);
bool jsonMode();

/// Writes `text` to standard output as it is, without adding a line end, and
/// flushes, so that progress shows at once and keeps its order with errors.
void print(const QString& text);

/// Writes `text` to standard error as it is, in JSON mode too.
void printDiagnostic(const QString& text);

/// Tells the person at a terminal something that no script is to see: writes the text and
/// a line end to standard error when that is a terminal and JSON mode is off, else nothing.
void printNote(const QString& text);

/// Reports a failure: text mode writes the text and a line end to standard
/// error, JSON mode the object {"error": text} to standard output.
void printError(const QString& text);

/// Reports a failure with printError() and returns `code`, so that a handler ends in one
/// line.
int failWith(int code, const QString& text);

/// Says on standard output how a command is getting on; in JSON mode, which prints one
/// object at the end, nothing.
void printProgress(const QString& text);

/// Writes the object as one compact line to standard output.
void printJson(const QJsonObject& object);

/// Ends a command that succeeded: the object in JSON mode, else the text.
void printResult(const QJsonObject& object, const QString& text);

}  // namespace quorvelle
