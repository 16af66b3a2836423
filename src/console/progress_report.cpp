#include "console/progress_report.h"

#include <array>
#include <utility>

#include "console/output.h"
#include "console/terminal.h"

namespace quorvelle {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLeastPause{100};
constexpr milliseconds kRedraw{500};
constexpr std::array kSteps = {"checking", "downloading", "uploading", "verifying", "activating"};
constexpr std::array kEnds = {"done", "failed", "blocked"};

const char* nameOf(WorkStep step) {
    return kSteps.at(static_cast<std::size_t>(step));
}

}  // namespace

ProgressReport::ProgressReport(const QString& name, Clock time)
    : sendsEvents(qgetenv("QUORVELLE_PROGRESS") == "json"),
      clock(std::move(time)),
      progress{.name = name, .bytes = 0, .total = {}} {
    // A window that gets another size, and a connection on which nothing comes any more.
    redraw.callOnTimeout([this] { draw(); });
}

ProgressReport::~ProgressReport() {
    takeAway();
}

bool ProgressReport::isShown() const {
    return !sendsEvents && terminalOf(stderr).redraws && terminalOf(stdout).isThere;
}

void ProgressReport::setBuild(const QString& newBuild) {
    build = newBuild;
}

void ProgressReport::begin(WorkStep step) {
    takeAway();
    current = step;
    rate = {};
    progress.bytes = 0;
    progress.total.reset();
    if (sendsEvents) {
        sendEvent(nameOf(step));
    }
}

void ProgressReport::moved(qint64 bytes, std::optional<qint64> total) {
    progress.bytes = bytes;
    progress.total = total;
    const milliseconds now = clock();
    if (lastTold && now - *lastTold < kLeastPause) {
        return;
    }
    lastTold = now;
    if (!sendsEvents) {
        draw();
        return;
    }
    QJsonObject more{{QStringLiteral("bytes"), bytes}};
    if (total) {
        more.insert(QStringLiteral("total"), *total);
    }
    sendEvent(nameOf(current), more);
}

void ProgressReport::end(WorkEnd end, const QString& message) {
    takeAway();
    if (sendsEvents) {
        sendEvent(kEnds.at(static_cast<std::size_t>(end)),
                  {{QStringLiteral("message"), withoutPasswords(message)}});
    }
}

void ProgressReport::draw() {
    const Terminal terminal = terminalOf(stderr);
    if (terminal.redraws) {
        rate.note(clock(), progress.bytes);
        // A line that fills its last column may continue on the next.
        showStatus(progressText(progress, rate.perSecond(), terminal.width - 1));
        redraw.start(kRedraw);
    }
}

void ProgressReport::sendEvent(const char* event, QJsonObject more) {
    more.insert(QStringLiteral("event"), QLatin1String(event));
    more.insert(QStringLiteral("name"), progress.name);
    if (!build.isEmpty()) {
        more.insert(QStringLiteral("build"), build);
    }
    printEvent(more);
}

void ProgressReport::takeAway() {
    redraw.stop();
    showStatus({});
}

}  // namespace quorvelle
