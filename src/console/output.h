#pragma once

#include <QJsonObject>
#include <QString>

#include "console/shown_text.h"

/// Everything the program says goes through here, in UTF-8; no other file writes
/// to standard output or standard error. Main thread only.
///
/// What comes from a server, a file or a stranger is shown, never obeyed: on a terminal
/// control characters stand as \xNN. A QString is one line, with or without its end, so that a
/// line end further in is shown as well; only print() and printDiagnostic() take it for a text
/// of our own. What has more lines and such values in them is given as Lines.
///
/// Passwords inside addresses are "***" everywhere but in JSON documents and printValue().

namespace quorvelle {

/// JSON mode: a successful command prints one compact JSON object, an error is
/// printed as {"error": text}. Set once at start, from the switch "--json".
void setJsonMode(bool on);
bool jsonMode();

/// Whether a text is lost with standard output, as on a full disk: what a server or this
/// run tells only once is then written to standard error instead.
enum class Kept { kUsually, kAlways };

/// Writes a text of our own to standard output, without adding a line end, and flushes, so
/// that progress shows at once and keeps its order with errors. A write that fails does not
/// stop the command's work; endOutput() tells of it.
void print(const QString& text);
void print(const Lines& lines);

/// The same to standard error, in JSON mode too.
void printDiagnostic(const QString& text);
void printDiagnostic(const Lines& lines);

/// Tells the person at a terminal something that no script is to see: writes the line
/// to standard error when that is a terminal and JSON mode is off, else nothing. An empty
/// line is none.
void printNote(const QString& line);
void printNote(const Lines& lines);

/// Reports a failure: text mode writes the line to standard error, JSON mode the object
/// {"error": text} to standard output.
void printError(const QString& line, Kept kept = Kept::kUsually);
void printError(const Lines& lines, Kept kept = Kept::kUsually);

/// Reports a failure with printError() and returns `code`, so that a handler ends in one
/// line.
int failWith(int code, const QString& line);

/// Says on standard output how a command is getting on; in JSON mode, which prints one
/// object at the end, nothing.
void printProgress(const QString& line);
void printProgress(const Lines& lines);

/// Writes the object as one compact line to standard output.
void printJson(const QJsonObject& object, Kept kept = Kept::kUsually);

/// Ends a command that succeeded: the object in JSON mode, else the text.
void printResult(const QJsonObject& object, const QString& line, Kept kept = Kept::kUsually);
void printResult(const QJsonObject& object, const Lines& lines, Kept kept = Kept::kUsually);

/// Ends a command that was asked for a value: it alone, with all that is in it, or in JSON
/// mode as the object {key: value}.
void printValue(const QString& key, const QString& value);

/// Writes the object as one compact line to standard error, in both modes: an event for a
/// program that watches this one.
void printEvent(const QJsonObject& event);

/// Keeps a line at the foot of a terminal that is standard error and redraws: what is
/// printed goes above it. Another line takes its place, an empty one takes it away, and it is
/// gone when the process is ended from outside. It must fit into the terminal's width and
/// hold nothing to obey. Anywhere else nothing happens.
void showStatus(const QString& line);

/// Ends the program's output and returns the exit code of a run that would end with
/// `exitCode`: after a failed write to standard output, a success becomes kExitFailed. The
/// reason goes to standard error, but a reader that merely went away needs none, unless
/// something went to standard error in its place.
int endOutput(int exitCode);

}  // namespace quorvelle
