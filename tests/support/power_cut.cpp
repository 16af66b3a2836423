#include "support/power_cut.h"

#include <sys/stat.h>

#include <algorithm>

namespace quorvelle::testing {

namespace {

/// Of more uncertain changes at one moment the states would be too many to try.
constexpr std::size_t kMaxUncertain = 8;

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString inodeOf(const QString& path) {
    struct stat about = {};
    return ::lstat(path.toUtf8().constData(), &about) == 0
               ? QString::number(static_cast<qulonglong>(about.st_ino))
               : QString();
}

}  // namespace

PowerCut::PowerCut(const Sandbox& sandbox, const QString& folder, const QStringList& places)
    : top(QFileInfo(sandbox.path(folder)).absoluteFilePath()), apart(places) {
    before.folders[kTop];
    look(top, kTop);
    now = before;
}

void PowerCut::look(const QString& path, Node folder) {
    for (const QFileInfo& entry : QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                           QDir::System | QDir::NoDotAndDotDot)) {
        const Node node = nodeOf(inodeOf(entry.filePath()), true);
        before.folders[folder][entry.fileName()] = node;
        if (entry.isDir()) {
            before.folders[node];
            look(entry.filePath(), node);
        } else {
            before.files[node] = fileBytes(entry.filePath());
        }
    }
}

PowerCut::Node PowerCut::nodeOf(const QString& inode, bool isNew) {
    Node& node = nodes[inode];
    if (isNew || node == kNothing) {
        node = ++last;
    }
    return node;
}

PowerCut::Node PowerCut::find(const QString& path) const {
    Node node = kTop;
    const QString below = QDir::cleanPath(path).mid(top.size());
    for (const QString& name : below.split(u'/', Qt::SkipEmptyParts)) {
        const auto folder = now.folders.find(node);
        const bool stands = folder != now.folders.end() && folder->second.contains(name);
        node = stands ? folder->second.at(name) : kNothing;
    }
    return node;
}

PowerCut::Change PowerCut::changeAt(const QString& path, Node node) const {
    const QFileInfo entry(QDir::cleanPath(path));
    return {find(entry.path()), entry.fileName(), node};
}

void PowerCut::read(const QStringList& words) {
    const QString& word = words[0];
    if (word == "born") {
        nodeOf(words[1], true);
    } else if (word == "bytes") {
        happen({.flushed = nodeOf(words[1], false), .bytes = fileBytes(words[2])});
    } else if (word == "all") {
        happen({.flushesAll = true});
    } else if (!words.last().startsWith(top + u'/') || words.last().endsWith(".lock")) {
        return;  // another folder of the sandbox, or what says nothing once its holder ended
    } else if (word == "flush") {
        happen({.flushed = find(words[1])});
    } else if (word == "gone") {
        happen({.changes = {changeAt(words[1], kNothing)}});
    } else if (word == "move") {
        const Call move{
            .changes = {changeAt(words[1], kNothing), changeAt(words[2], find(words[1]))}};
        // A file that was saved whole; nothing reads its temporary name.
        if (!calls.empty() && calls.back().changes.size() == 1 &&
            calls.back().changes[0].name == move.changes[0].name &&
            calls.back().changes[0].node == move.changes[1].node) {
            calls.pop_back();
        }
        happen(move);
    } else {
        const Node node = nodeOf(words[1], word == "folder");
        happen({.changes = {changeAt(words[2], node)}});
        if (word == "folder") {
            before.folders[node];
            now.folders[node];
        }
    }
}

void PowerCut::happen(Call call) {
    apply(call, now);
    calls.push_back(std::move(call));
}

void PowerCut::apply(const Call& call, Disk& disk) {
    for (const auto& [folder, name, node] : call.changes) {
        if (node == kNothing) {
            disk.folders[folder].erase(name);
        } else {
            disk.folders[folder][name] = node;
        }
    }
    if (call.changes.empty() && !disk.folders.contains(call.flushed)) {
        disk.files[call.flushed] = call.bytes;
    }
}

bool PowerCut::isCertain(std::size_t call, std::size_t end) const {
    return std::all_of(
        calls[call].changes.begin(), calls[call].changes.end(), [&](const Change& change) {
            return std::any_of(calls.begin() + long(call), calls.begin() + long(end),
                               [&](const Call& later) {
                                   return later.flushesAll ||
                                          (later.changes.empty() && later.flushed == change.folder);
                               });
        });
}

bool PowerCut::isApart(const Call& call) const {
    return std::any_of(call.changes.begin(), call.changes.end(), [&](const Change& change) {
        return change.folder == kTop ||
               std::any_of(apart.begin(), apart.end(), [&](const QString& folder) {
                   return find(top + u'/' + folder) == change.folder;
               });
    });
}

void PowerCut::addStates(std::size_t end, std::set<DiskState>& states) const {
    std::vector<std::size_t> uncertain;
    std::vector<std::size_t> deeper;
    for (std::size_t call = 0; call < end; ++call) {
        if (!isCertain(call, end)) {
            (isApart(calls[call]) ? uncertain : deeper).push_back(call);
        }
    }
    ASSERT_LE(uncertain.size(), kMaxUncertain);
    const auto missing = [&](std::size_t call, unsigned chosen, std::size_t deep) {
        const auto at = std::find(uncertain.begin(), uncertain.end(), call);
        const auto deepAt = std::find(deeper.begin(), deeper.end(), call);
        return (at != uncertain.end() && (chosen >> (at - uncertain.begin()) & 1U) == 0) ||
               (deepAt != deeper.end() && std::size_t(deepAt - deeper.begin()) >= deep);
    };
    for (const std::size_t deep : std::set{std::size_t{0}, deeper.size() / 2, deeper.size()}) {
        for (unsigned chosen = 0; chosen < 1U << uncertain.size(); ++chosen) {
            Disk disk = before;
            for (std::size_t call = 0; call < end; ++call) {
                if (!missing(call, chosen, deep)) {
                    apply(calls[call], disk);
                }
            }
            DiskState state;
            list(disk, kTop, {}, state);
            states.insert(std::move(state));
        }
    }
}

void PowerCut::list(const Disk& disk, Node folder, const QString& path, DiskState& state) {
    for (const auto& [name, node] : disk.folders.at(folder)) {
        if (!disk.folders.contains(node)) {
            const auto bytes = disk.files.find(node);
            state[path + name] = bytes == disk.files.end() ? QByteArray() : bytes->second;
        } else if (disk.folders.at(node).empty()) {
            state[path + name + u'/'] = {};
        } else {
            list(disk, node, path + name + u'/', state);
        }
    }
}

std::set<DiskState> PowerCut::states(const QString& trace) {
    for (const QByteArray& line : fileBytes(trace + "/calls").split('\n')) {
        if (!line.isEmpty()) {
            read(QString::fromUtf8(line).split(u'\t'));
        }
    }
    std::set<DiskState> found;
    for (std::size_t end = 0; end <= calls.size(); ++end) {
        addStates(end, found);
    }
    return found;
}

}  // namespace quorvelle::testing
