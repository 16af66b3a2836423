#pragma once

#include <QJsonObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <optional>

#include "console/progress_line.h"

namespace quorvelle {

/// What is being done, and how it ended: the names are those of the events.
enum class WorkStep { kChecking, kDownloading, kUploading, kVerifying, kActivating };
enum class WorkEnd { kDone, kFailed, kBlocked };

/// Tells how one piece of long work gets on while it runs: a person by a line that is drawn
/// again at the foot of a terminal; a launcher, which sets QUORVELLE_PROGRESS to "json", by
/// JSON objects on standard error, one a line; anybody else not at all. Main thread, whose
/// event loop keeps the line up to date where nothing moves.
class ProgressReport {
public:
    /// `name` is what the work is for: a subscription, a channel.
    explicit ProgressReport(const QString& name, Clock time = steadyTime);
    /// Takes the line away.
    ~ProgressReport();

    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;

    /// Whether a person sees the line below the lines that are printed, so that those need
    /// not repeat how much is done.
    bool isShown() const;

    /// The build that the work is about, known from here on.
    void setBuild(const QString& build);

    void begin(WorkStep step);

    /// How many bytes of the step are done, and how many it has where that is known. Told at
    /// most ten times a second.
    void moved(qint64 bytes, std::optional<qint64> total);

    /// The end, with the message that the person reads. Nothing may follow.
    void end(WorkEnd end, const QString& message);

private:
    void draw();
    void sendEvent(const char* event, QJsonObject more = {});
    void takeAway();

    const bool sendsEvents;
    const Clock clock;
    Progress progress;
    QString build;
    WorkStep current = WorkStep::kChecking;
    Rate rate;
    std::optional<std::chrono::milliseconds> lastTold;
    QTimer redraw;
};

}  // namespace quorvelle
