#include "console/mistake.h"

#include <algorithm>

#include "console/nearest_word.h"

namespace quorvelle {

namespace {

/// Reads a command line word by word and keeps the forms that it can still become. Each
/// step returns what is wrong, or nothing.
class LineChecker {
public:
    explicit LineChecker(const QList<UsageForm>& all) : forms(all) {}

    QString check(const QStringList& words) {
        QString mistake = takeOptions(words);
        for (qsizetype at = 0; mistake.isEmpty() && at < plain.size(); ++at) {
            mistake = takePlain(at);
        }
        mistake = mistake.isEmpty() ? takeTogether() : mistake;
        mistake = mistake.isEmpty() ? missing() : mistake;
        mistake = mistake.isEmpty() ? unfit : mistake;
        if (mistake.isEmpty() && words.contains(QString())) {
            return QStringLiteral("'' is empty where something is due");
        }
        return mistake;
    }

private:
    const FormOption* known(const QString& name) const {
        for (const UsageForm& form : forms) {
            if (const FormOption* option = form.option(name)) {
                return option;
            }
        }
        return nullptr;
    }

    QString unknownOption(const QString& word) const {
        QStringList names{QStringLiteral("--help"), QStringLiteral("--json")};
        for (const UsageForm& form : forms) {
            for (const FormOption& option : form.options) {
                names.append(option.name);
            }
        }
        const QString name = word.section(u'=', 0, 0);
        std::optional<QString> meant = nearestWord(name, names);
        if (meant && name != word) {
            *meant += u' ' + word.section(u'=', 1);
        }
        return QStringLiteral("Unknown option '%1'.").arg(word) + didYouMean(meant);
    }

    /// Sorts the words into options and others.
    QString takeOptions(const QStringList& words) {
        for (qsizetype at = 0; at < words.size(); ++at) {
            const QString& word = words.at(at);
            const auto takesRest = [](const UsageForm& form) { return form.takesRest; };
            if (word == u"--" && std::any_of(forms.begin(), forms.end(), takesRest)) {
                return {};
            }
            const FormOption* option = known(word);
            if (option == nullptr) {
                if (word.startsWith(QStringLiteral("--"))) {
                    return unknownOption(word);
                }
                plain.append(word);
                continue;
            }
            used.append(word);
            if (!option->value) {
                continue;
            }
            if (++at == words.size()) {
                return QStringLiteral("%1 needs a value: %2").arg(word, option->shown());
            }
            if (QString mistake = notIn(words.at(at), {*option->value}); !mistake.isEmpty()) {
                return mistake;
            }
        }
        return {};
    }

    /// Nothing when one of the places takes the word.
    QString notIn(const QString& word, const QList<Place>& places) {
        QStringList right;
        for (const Place& place : places) {
            if (place.accepts(word)) {
                if (!place.words.isEmpty() && !place.words.contains(word, Qt::CaseInsensitive)) {
                    unfit = QStringLiteral("'%1' may not fit %2.").arg(word, place.shown);
                }
                return {};
            }
            right += place.words;
        }
        right.removeDuplicates();
        return QStringLiteral("'%1' is none of %2.").arg(word, right.join(QStringLiteral(", "))) +
               didYouMean(nearestWord(word, right));
    }

    /// Leaves the forms in which the word at this place is spelt out, else those that take
    /// any word there.
    QString takePlain(qsizetype at) {
        const QString& word = plain.at(at);
        QList<UsageForm> spelt;
        QList<UsageForm> open;
        QList<Place> places;
        for (const UsageForm& form : std::as_const(forms)) {
            if (form.places.size() > at) {
                const Place& place = form.places.at(at);
                places.append(place);
                (place.words.contains(word) ? spelt : open).append(form);
            }
        }
        if (places.isEmpty()) {
            return word.startsWith(u'-') ? unknownOption(word)
                                         : QStringLiteral("'%1' is one word too many.").arg(word);
        }
        if (QString mistake = notIn(word, places); !mistake.isEmpty()) {
            return mistake;
        }
        open.removeIf([&](const UsageForm& form) { return !form.places.at(at).accepts(word); });
        forms = spelt.isEmpty() ? open : spelt;
        return {};
    }

    /// Leaves the forms that have all the options.
    QString takeTogether() {
        for (const QString& option : std::as_const(used)) {
            QList<UsageForm> left = forms;
            left.removeIf([&](const UsageForm& form) { return form.option(option) == nullptr; });
            if (left.isEmpty()) {
                return QStringLiteral("%1 does not go with the rest.").arg(option);
            }
            forms = left;
        }
        return {};
    }

    /// What would complete the forms; nothing when one of them is complete.
    QString missing() const {
        QStringList due;
        for (const UsageForm& form : forms) {
            QStringList wanted;
            if (form.places.size() > plain.size()) {
                const Place& place = form.places.at(plain.size());
                wanted = place.takesAny ? QStringList(place.shown) : place.words;
            }
            for (const FormOption& option : form.options) {
                if (wanted.isEmpty() && option.isNeeded && !used.contains(option.name)) {
                    wanted.append(option.shown());
                }
            }
            if (wanted.isEmpty()) {
                return {};
            }
            due += wanted;
        }
        due.removeDuplicates();
        return (due.size() == 1 ? QStringLiteral("%1 is missing.")
                                : QStringLiteral("One of these is missing: %1."))
            .arg(due.join(QStringLiteral(", ")));
    }

    QList<UsageForm> forms;
    /// The words that are neither an option nor its value.
    QStringList plain;
    QStringList used;
    /// A word that may be wrong; what it has to be like, the forms do not tell.
    QString unfit;
};

}  // namespace

QString mistakeIn(const QStringList& words, const QList<UsageForm>& forms) {
    const QString mistake = LineChecker(forms).check(words);
    return mistake.isEmpty() ? QStringLiteral("That is not how it is used.") : mistake;
}

}  // namespace quorvelle
