#include "completion_tree.h"

#include <algorithm>
#include <set>

#include "admin/roles.h"
#include "console/usage_forms.h"

namespace quorvelle {

namespace {

class TreeBuilder {
public:
    void add(const Command& row) {
        command = &row;
        const QStringList words = wordsOf(row);
        QString path = kRoot;
        for (const QString& word : words) {
            const QString longer = path + u' ' + word;
            NextWord& next = offer(path, word);
            next.summary =
                longer == kRoot + u' ' + words.join(u' ') ? fromTable(row.summary) : next.summary;
            path = longer;
        }
        for (const UsageForm& form : usageForms(row)) {
            addForm(form);
        }
    }

    CompletionTree take() {
        for (auto& [path, node] : tree) {
            std::sort(node.words.begin(), node.words.end(),
                      [](const NextWord& a, const NextWord& b) { return a.word < b.word; });
            exclude(node, forms[path]);
        }
        return std::move(tree);
    }

private:
    const QString kRoot = QStringLiteral("quorvelle");

    NextWord& offer(const QString& path, const QString& word) {
        QList<NextWord>& words = tree[path].words;
        const auto known = std::find_if(words.begin(), words.end(),
                                        [&](const NextWord& next) { return next.word == word; });
        return known != words.end() ? *known : words.emplace_back(NextWord{word});
    }

    /// Walks down a form, in all ways where a place has several words.
    void addForm(const UsageForm& form) {
        QStringList paths{kRoot};
        for (qsizetype at = 0; at < form.places.size(); ++at) {
            QStringList longer;
            for (const QString& path : paths) {
                if (at >= form.fixedPlaces()) {
                    addOptions(path, form);
                }
                longer += addPlace(path, form.places.at(at));
            }
            paths = longer;
        }
        for (const QString& path : paths) {
            addOptions(path, form);
            tree[path].isComplete = true;
            tree[path].takesRest = form.takesRest;
        }
    }

    /// The paths that go on from this one.
    QStringList addPlace(const QString& path, const Place& place) {
        QStringList longer;
        const Takes takes = findPlaceMeaning(command->words, place.shown.toStdString());
        for (const QString& word : offered(place, takes).words) {
            offer(path, word);
        }
        for (const QString& word : place.words) {
            longer.append(path + u' ' + word);
        }
        if (place.takesAny) {
            tree[path].place = place.shown;
            tree[path].takes = takes;
            longer.append(path + u' ' + place.shown);
        }
        return longer;
    }

    static Offer offered(const Place& place, Takes takes) {
        return {
            .words = takes == Takes::kRole ? QStringList{kAdmin, kMember, kPublisher} : place.words,
            .takes = takes};
    }

    void addOptions(const QString& path, const UsageForm& form) {
        QList<CompletionOption>& options = tree[path].options;
        std::set<QString> names;
        for (const FormOption& option : form.options) {
            names.insert(option.name);
            const auto isKnown = [&](const CompletionOption& known) {
                return known.name == option.name;
            };
            if (std::none_of(options.begin(), options.end(), isKnown)) {
                const OptionText* found =
                    findOptionText(command->words, option.shown().toStdString());
                const OptionText text = found == nullptr ? OptionText{} : *found;
                options.append({.name = option.name,
                                .text = fromTable(text.text),
                                .value = option.value
                                             ? std::optional(offered(*option.value, text.takes))
                                             : std::nullopt,
                                .excludedBy = {}});
            }
        }
        forms[path].push_back(std::move(names));
    }

    static void exclude(CompletionNode& node, const std::vector<std::set<QString>>& forms) {
        for (CompletionOption& option : node.options) {
            for (const CompletionOption& other : std::as_const(node.options)) {
                const auto haveBoth = [&](const std::set<QString>& names) {
                    return names.contains(option.name) && names.contains(other.name);
                };
                if (std::none_of(forms.begin(), forms.end(), haveBoth)) {
                    option.excludedBy.append(other.name);
                }
            }
        }
    }

    const Command* command = nullptr;
    CompletionTree tree;
    /// The options of each form that goes through a node.
    std::map<QString, std::vector<std::set<QString>>> forms;
};

}  // namespace

CompletionTree completionTree(CommandTable table) {
    TreeBuilder builder;
    for (const Command& command : table) {
        // "--version" is a command, and is offered where options are.
        if (!command.words.starts_with('-')) {
            builder.add(command);
        }
    }
    CompletionTree tree = builder.take();
    for (const Command& command : table) {
        if (command.words.starts_with('-')) {
            tree[QStringLiteral("quorvelle")].options.append({.name = fromTable(command.words),
                                                              .text = fromTable(command.summary),
                                                              .value = std::nullopt,
                                                              .excludedBy = {}});
        }
    }
    return tree;
}

QList<NextWord> globalOptions() {
    QList<NextWord> options;
    for (const char* name : {"--help", "--json"}) {
        options.append({QString::fromLatin1(name), fromTable(findOptionText({}, name)->text)});
    }
    return options;
}

}  // namespace quorvelle
