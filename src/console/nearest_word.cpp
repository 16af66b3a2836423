#include "console/nearest_word.h"

#include <algorithm>
#include <vector>

namespace quorvelle {

qsizetype slips(const QString& typed, const QString& meant) {
    const QString a = typed.toLower();
    const QString b = meant.toLower();
    // Three rows of the table of distances between all beginnings of the two words.
    std::vector<qsizetype> beforeLast(std::size_t(b.size()) + 1);
    std::vector<qsizetype> last(beforeLast.size());
    std::vector<qsizetype> row(beforeLast.size());
    for (std::size_t j = 0; j < row.size(); ++j) {
        row[j] = qsizetype(j);
    }
    for (qsizetype i = 1; i <= a.size(); ++i) {
        beforeLast = last;
        last = row;
        row[0] = i;
        for (std::size_t j = 1; j < row.size(); ++j) {
            const auto at = qsizetype(j);
            const bool same = a[i - 1] == b[at - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && at > 1 && a[i - 1] == b[at - 2] && a[i - 2] == b[at - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row.back();
}

bool isNear(const QString& typed, const QString& meant) {
    constexpr qsizetype kLettersPerSlip = 3;
    return slips(typed, meant) <= std::max(qsizetype(1), meant.size() / kLettersPerSlip) &&
           // Of "go" and "run" no letter is the same.
           slips(typed, meant) < std::max(typed.size(), meant.size());
}

std::optional<QString> nearestWord(const QString& typed, const QStringList& known) {
    const auto nearest = std::min_element(
        known.begin(), known.end(),
        [&](const QString& a, const QString& b) { return slips(typed, a) < slips(typed, b); });
    return nearest != known.end() && isNear(typed, *nearest) ? std::optional(*nearest)
                                                             : std::nullopt;
}

QString didYouMean(const std::optional<QString>& meant) {
    return meant ? QStringLiteral(" Did you mean '%1'?").arg(*meant) : QString();
}

}  // namespace quorvelle
