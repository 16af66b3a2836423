#include "scripts.h"

namespace quorvelle {

namespace {

/// A line of what a key leads to: a word, and a phrase that says what it does.
using Phrases = QList<NextWord>;
using Entries = std::map<QString, Phrases>;

/// What the scripts look up, by the mark in whose place it goes.
struct Tables {
    Entries next;
    Entries place;
    Entries options;
    Entries value;
    Entries excluded;
};

Phrases linesOf(const QStringList& words) {
    Phrases lines;
    for (const QString& word : words) {
        lines.append({word});
    }
    return lines;
}

/// The mark for what the shell or the program knows, none where nobody does.
Phrases known(Takes takes) {
    switch (takes) {
        case Takes::kDirectory:
            return linesOf({QStringLiteral("@directories")});
        case Takes::kFile:
            return linesOf({QStringLiteral("@files")});
        case Takes::kSubscription:
            return linesOf({QStringLiteral("@name")});
        case Takes::kServer:
            return linesOf({QStringLiteral("@server")});
        case Takes::kAnything:
        case Takes::kRole:
            break;
    }
    return {};
}

Tables tablesOf(const CompletionTree& tree) {
    Tables tables;
    for (const auto& [path, node] : tree) {
        Phrases next = node.words + known(node.takes);
        if (node.isComplete) {
            next.append({QStringLiteral("@end")});
        }
        if (node.takesRest) {
            next.append({QStringLiteral("@rest")});
        }
        tables.next[path] = next;
        if (!node.place.isEmpty()) {
            tables.place[path] = linesOf({node.place});
        }
        for (const CompletionOption& option : node.options) {
            const QString key = path + u' ' + option.name;
            tables.options[path].append({option.name, option.text});
            if (option.value) {
                tables.value[key] = linesOf(option.value->words) + known(option.value->takes);
            }
            if (!option.excludedBy.isEmpty()) {
                tables.excluded[key] = linesOf(option.excludedBy);
            }
        }
    }
    return tables;
}

QString withPhrase(const NextWord& line, const QString& between) {
    return line.summary.isEmpty() ? line.word : line.word + between + line.summary;
}

/// In single quotes, for bash, zsh and fish alike: the phrases hold no backslash.
QString quoted(const QString& text) {
    return u'\'' + QString(text).replace(u'\'', QStringLiteral("'\\''")) + u'\'';
}

QString quotedForPowerShell(const QString& text) {
    return u'\'' + QString(text).replace(u'\'', QStringLiteral("''")) + u'\'';
}

QString joined(const Phrases& lines, const QString& phrase, const QString& separator) {
    QStringList texts;
    for (const NextWord& line : lines) {
        texts.append(phrase.isNull() ? line.word : withPhrase(line, phrase));
    }
    return texts.join(separator);
}

QString forBash(const Entries& entries) {
    QString text;
    for (const auto& [key, lines] : entries) {
        text += QStringLiteral("  [%1]=%2\n")
                    .arg(quoted(key), quoted(joined(lines, {}, QStringLiteral(" "))));
    }
    return text;
}

QString forZsh(const Entries& entries) {
    QString text;
    for (const auto& [key, lines] : entries) {
        text +=
            QStringLiteral("  %1 %2\n")
                .arg(quoted(key), quoted(joined(lines, QStringLiteral(":"), QStringLiteral("\n"))));
    }
    return text;
}

QStringList quotedLines(const Phrases& lines, const QString& between) {
    QStringList texts;
    for (const NextWord& line : lines) {
        texts.append(quoted(withPhrase(line, between)));
    }
    return texts;
}

QString forFish(const Entries& entries) {
    QString text;
    for (const auto& [key, lines] : entries) {
        text += QStringLiteral("        case %1\n").arg(quoted(key));
        if (!lines.isEmpty()) {
            text += QStringLiteral("            printf '%s\\n' ") +
                    quotedLines(lines, QStringLiteral("\t")).join(u' ') + u'\n';
        }
    }
    return text;
}

QString powerShellWords(const Phrases& lines, const QString& margin) {
    QString text;
    for (const NextWord& line : lines) {
        text += margin + quotedForPowerShell(line.word) + QStringLiteral(" = ") +
                quotedForPowerShell(line.summary) + u'\n';
    }
    return text;
}

QString forPowerShell(const Entries& entries) {
    QString text;
    for (const auto& [key, lines] : entries) {
        text += QStringLiteral("        %1 = [ordered]@{\n%2        }\n")
                    .arg(quotedForPowerShell(key), powerShellWords(lines, QString(12, u' ')));
    }
    return text;
}

QString globalsFor(Shell shell) {
    const Phrases options = globalOptions();
    switch (shell) {
        case Shell::kBash:
            return joined(options, {}, QStringLiteral(" "));
        case Shell::kZsh:
            return quotedLines(options, QStringLiteral(":")).join(u' ');
        case Shell::kFish:
            return quotedLines(options, QStringLiteral("\t")).join(u' ');
        case Shell::kPowerShell:
            break;
    }
    return powerShellWords(options, QString(8, u' '));
}

QString entriesFor(Shell shell, const Entries& entries) {
    switch (shell) {
        case Shell::kBash:
            return forBash(entries);
        case Shell::kZsh:
            return forZsh(entries);
        case Shell::kFish:
            return forFish(entries);
        case Shell::kPowerShell:
            break;
    }
    return forPowerShell(entries);
}

}  // namespace

QString filledIn(QString script, Shell shell, const CompletionTree& tree) {
    const Tables tables = tablesOf(tree);
    return script.replace(QStringLiteral("@NEXT@"), entriesFor(shell, tables.next))
        .replace(QStringLiteral("@PLACE@"), entriesFor(shell, tables.place))
        .replace(QStringLiteral("@OPTIONS@"), entriesFor(shell, tables.options))
        .replace(QStringLiteral("@VALUE@"), entriesFor(shell, tables.value))
        .replace(QStringLiteral("@EXCLUDED@"), entriesFor(shell, tables.excluded))
        .replace(QStringLiteral("@GLOBAL@"), globalsFor(shell));
}

}  // namespace quorvelle
