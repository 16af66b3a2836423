#include "console/progress_line.h"

#include <QStringList>
#include <algorithm>
#include <array>

#include "console/shown_text.h"

namespace quorvelle {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWindow{5000};
constexpr milliseconds kLeast{1000};
constexpr int kNameColumns = 20;
constexpr int kLeastBar = 10;
constexpr int kMostBar = 30;
constexpr qint64 kLongestLeft = 100 * 3600;

/// At most, for a terminal shows most letters in one column and some in two.
int columnsOf(const QString& text) {
    int columns = 0;
    for (const char32_t letter : text.toUcs4()) {
        columns += letter < 0x1100 ? 1 : 2;
    }
    return columns;
}

QString shortened(const QString& text, int columns) {
    if (columnsOf(text) <= columns) {
        return text;
    }
    QString kept;
    for (const char32_t letter : text.toUcs4()) {
        const QString longer = kept + QString::fromUcs4(&letter, 1);
        if (columnsOf(longer) > columns - 3) {
            break;
        }
        kept = longer;
    }
    return kept + QStringLiteral("...");
}

/// A unit in which the number has at most four digits before the point.
struct Unit {
    const char* name;
    double bytes;
};

Unit unitFor(double bytes) {
    constexpr std::array<Unit, 4> kUnits{
        {{"bytes", 1.0}, {"KiB", 1024.0}, {"MiB", 1048576.0}, {"GiB", 1073741824.0}}};
    const auto* unit = kUnits.begin();
    while (unit + 1 != kUnits.end() && bytes >= 1024 * unit->bytes) {
        ++unit;
    }
    return *unit;
}

QString inUnit(double bytes, const Unit& unit) {
    return QString::number(bytes / unit.bytes, 'f', unit.bytes > 1 ? 1 : 0);
}

QString amountText(const Progress& progress) {
    const auto most = static_cast<double>(progress.total.value_or(progress.bytes));
    const Unit unit = unitFor(most);
    const QString done = inUnit(static_cast<double>(progress.bytes), unit);
    const QString name = QLatin1String(unit.name);
    if (!progress.total) {
        return done + u' ' + name;
    }
    const QString all = inUnit(most, unit);
    return done.rightJustified(all.size()) + QStringLiteral(" of ") + all + u' ' + name;
}

QString rateText(double bytesPerSecond) {
    const Unit unit = unitFor(bytesPerSecond);
    return (inUnit(bytesPerSecond, unit) + u' ' + QLatin1String(unit.name) + QStringLiteral("/s"))
        .rightJustified(12);
}

QString leftText(const Progress& progress, double bytesPerSecond) {
    const qint64 bytes = progress.total.value_or(0) - progress.bytes;
    if (bytes <= 0 || bytesPerSecond * kLongestLeft <= static_cast<double>(bytes)) {
        return {};
    }
    const auto seconds = static_cast<qint64>(static_cast<double>(bytes) / bytesPerSecond + 0.5);
    const QString tail = QStringLiteral(":%1 left").arg(seconds % 60, 2, 10, QLatin1Char('0'));
    const qint64 minutes = seconds / 60;
    return minutes < 60 ? QString::number(minutes) + tail
                        : QStringLiteral("%1:%2")
                                  .arg(minutes / 60)
                                  .arg(minutes % 60, 2, 10, QLatin1Char('0')) +
                              tail;
}

QString barText(const Progress& progress, int columns) {
    const double share = static_cast<double>(progress.bytes) / static_cast<double>(*progress.total);
    const int inside = columns - 2;
    const int done = std::clamp(static_cast<int>(share * inside), 0, inside);
    return u'[' + QString(done, u'#') + QString(inside - done, u'-') + u']';
}

}  // namespace

milliseconds steadyTime() {
    return std::chrono::duration_cast<milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

void Rate::note(milliseconds now, qint64 bytes) {
    if (!samples.empty() && bytes < samples.back().second) {
        samples.clear();
    }
    samples.emplace_back(now, bytes);
    while (samples.size() > 2 && now - samples[1].first >= kWindow) {
        samples.pop_front();
    }
}

std::optional<double> Rate::perSecond() const {
    if (samples.empty() || samples.back().first - samples.front().first < kLeast) {
        return std::nullopt;
    }
    const std::chrono::duration<double> time = samples.back().first - samples.front().first;
    return static_cast<double>(samples.back().second - samples.front().second) / time.count();
}

QString progressText(const Progress& progress, std::optional<double> bytesPerSecond, int columns) {
    const QString gap = QStringLiteral("  ");
    const QString name = shortened(withVisibleControls(progress.name), kNameColumns);
    QStringList parts{name, amountText(progress)};
    const QString left = bytesPerSecond ? leftText(progress, *bytesPerSecond) : QString();
    if (bytesPerSecond) {
        parts << rateText(*bytesPerSecond);
    }
    if (!left.isEmpty()) {
        parts << left;
    }
    while (parts.size() > 2 && columnsOf(parts.join(gap)) > columns) {
        parts.removeLast();
    }
    if (columnsOf(parts.join(gap)) > columns) {
        return shortened(parts.last(), columns).left(columns);
    }
    // The places of rate and time are kept free, or the bar would jump when they come.
    const int others = std::max(columnsOf(parts.join(gap)), columnsOf(name) + 50);
    const int bar = std::min(columns - others - 2, kMostBar);
    if (progress.total.value_or(0) > 0 && bar >= kLeastBar) {
        parts.insert(1, barText(progress, bar));
    }
    return parts.join(gap);
}

}  // namespace quorvelle
