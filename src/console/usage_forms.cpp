#include "console/usage_forms.h"

#include <QRegularExpression>
#include <algorithm>
#include <utility>

namespace quorvelle {

namespace {

/// The lines that show a command line, each whole: without the remarks behind two blanks or
/// on lines of their own, the parts on further lines joined on.
QStringList wholeLines(const Command& command) {
    static const QString kProgram = QStringLiteral("quorvelle ");
    QStringList lines;
    for (const QString& line : fromTable(command.usage).split(u'\n')) {
        const QString text = line.trimmed().section(QStringLiteral("  "), 0, 0);
        if (text.startsWith(kProgram)) {
            lines.append(text.sliced(kProgram.size()));
        } else if (text.startsWith(u'[') || text.startsWith(u'-')) {
            lines.last() += u' ' + text;
        }
    }
    return lines;
}

Place placeOf(const QString& token) {
    if (!token.startsWith(u'<')) {
        return {.shown = token, .words = token.split(u'|')};
    }
    // The parts of "<seconds|manual|default>" that say what to put there, not which word.
    static const QStringList kMeasures{QStringLiteral("seconds"), QStringLiteral("HH:MM")};
    QStringList words = token.sliced(1, token.size() - 2).split(u'|');
    const bool isOneName = words.size() == 1;
    const auto measures =
        words.removeIf([](const QString& word) { return kMeasures.contains(word); });
    return {.shown = token,
            .words = isOneName ? QStringList() : words,
            .takesAny = isOneName || measures > 0};
}

/// Reads a line from left to right; each bracket multiplies the forms by its alternatives.
class LineReader {
public:
    explicit LineReader(const QString& line) {
        static const QRegularExpression kToken(R"(<[^<>]*>|[\[\]()]|[^\s\[\]()<>]+)");
        for (auto found = kToken.globalMatch(line); found.hasNext();) {
            tokens.append(found.next().captured());
        }
    }

    QList<UsageForm> sequence() {
        QList<UsageForm> forms{{}};
        while (!tokens.isEmpty() && !isEnd(tokens.first())) {
            const QString token = tokens.takeFirst();
            if (token == u"[" || token == u"(") {
                forms = product(forms, alternatives(token == u"("));
                continue;
            }
            UsageForm part;
            if (token == u"--") {
                part.takesRest = true;
                tokens.removeFirst();
            } else if (token.startsWith(u'-')) {
                part.options.append({.name = token, .value = optionValue()});
            } else {
                part.places.append(placeOf(token));
            }
            forms = product(forms, {part});
        }
        return forms;
    }

private:
    static bool isEnd(const QString& token) {
        return token == u"]" || token == u")" || token == u"|";
    }

    std::optional<Place> optionValue() {
        const bool isThere = !tokens.isEmpty() && !isEnd(tokens.first()) &&
                             !tokens.first().startsWith(u'-') && tokens.first() != u"[" &&
                             tokens.first() != u"(";
        return isThere ? std::optional(placeOf(tokens.takeFirst())) : std::nullopt;
    }

    /// What stands between the brackets, up to and with the closing one.
    QList<UsageForm> alternatives(bool areNeeded) {
        QList<UsageForm> forms;
        QString end;
        do {
            forms += sequence();
            end = tokens.isEmpty() ? QStringLiteral("]") : tokens.takeFirst();
        } while (end == u"|");
        for (UsageForm& form : forms) {
            for (FormOption& option : form.options) {
                option.isNeeded = option.isNeeded && areNeeded;
            }
        }
        return forms;
    }

    static QList<UsageForm> product(const QList<UsageForm>& fronts, const QList<UsageForm>& backs) {
        QList<UsageForm> forms;
        for (const UsageForm& front : fronts) {
            for (const UsageForm& back : backs) {
                forms.append({.places = front.places + back.places,
                              .options = front.options + back.options,
                              .takesRest = front.takesRest || back.takesRest});
            }
        }
        return forms;
    }

    QStringList tokens;
};

/// Whether one of the row's lines shows these words.
bool shows(const Command& row, const QStringList& words) {
    const QList<UsageForm> forms = usageForms(row);
    return std::any_of(forms.begin(), forms.end(), [&](const UsageForm& form) {
        return form.places.size() >= words.size() &&
               std::equal(words.begin(), words.end(), form.places.begin(),
                          [](const QString& word, const Place& place) {
                              return place.words.contains(word);
                          });
    });
}

}  // namespace

const FormOption* UsageForm::option(const QString& name) const {
    const auto found = std::find_if(options.begin(), options.end(),
                                    [&](const FormOption& option) { return option.name == name; });
    return found == options.end() ? nullptr : &*found;
}

qsizetype UsageForm::fixedPlaces() const {
    const auto end = std::find_if(places.begin(), places.end(),
                                  [](const Place& place) { return place.shown.startsWith(u'<'); });
    return end - places.begin();
}

QString fromTable(std::string_view text) {
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

QStringList wordsOf(const Command& command) {
    return fromTable(command.words).split(u' ');
}

const Command& rowShowing(const Command& command, CommandTable table) {
    if (!command.usage.empty()) {
        return command;
    }
    const QStringList words = wordsOf(command);
    const auto covers = [&](const Command& row) { return shows(row, words); };
    const auto doesTheSame = [&](const Command& row) {
        return !row.usage.empty() && row.handler == command.handler;
    };
    auto found = std::find_if(table.begin(), table.end(), covers);
    found = found == table.end() ? std::find_if(table.begin(), table.end(), doesTheSame) : found;
    return found == table.end() ? command : *found;
}

QString usageLines(const Command& command, CommandTable table) {
    return fromTable(rowShowing(command, table).usage);
}

QList<UsageForm> usageForms(const Command& command) {
    QList<UsageForm> forms;
    for (const QString& line : wholeLines(command)) {
        forms += LineReader(line).sequence();
    }
    return forms;
}

}  // namespace quorvelle
