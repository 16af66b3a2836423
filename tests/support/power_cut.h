#pragma once

#include <map>
#include <set>
#include <vector>

#include "support/process_runner.h"

/// A model of a disk that loses its power while a program works on it: what was flushed is
/// there, of what came after that any part.

namespace quorvelle::testing {

/// The bytes of every file below a folder by its relative path; a folder that is empty is
/// a name that ends in "/".
using DiskState = std::map<QString, QByteArray>;

/// The disk below one folder of a sandbox, from how it stands to how a run changes it.
///
/// A change of names is undivided. It is certain once every folder whose names it changes
/// was flushed; of the others each may be missing, whatever their order. In the folders of
/// `apart` and the one above all such parts are made; deeper down either none, the first
/// half or all of what is uncertain is there. A file holds what it held at its last flush,
/// and nothing before the first.
class PowerCut {
public:
    PowerCut(const Sandbox& sandbox, const QString& folder, const QStringList& apart);

    /// Every state that a power cut during a run can leave. `trace` is the folder in which
    /// the run wrote down its calls (see fault_shim.cpp).
    std::set<DiskState> states(const QString& trace);

private:
    using Node = int;
    static constexpr Node kNothing = 0;
    static constexpr Node kTop = 1;

    struct Change {
        Node folder;
        QString name;
        Node node;  ///< what has the name afterwards
    };
    /// One call: changes of names, or a flush.
    struct Call {
        std::vector<Change> changes = {};
        Node flushed = kNothing;  ///< a folder, or a file that then holds `bytes`
        QByteArray bytes = {};
        bool flushesAll = false;
    };
    struct Disk {
        std::map<Node, std::map<QString, Node>> folders;
        std::map<Node, QByteArray> files;
    };

    void look(const QString& path, Node folder);
    Node nodeOf(const QString& inode, bool isNew);
    Change changeAt(const QString& path, Node node) const;
    Node find(const QString& path) const;
    void read(const QStringList& words);
    void happen(Call call);
    bool isCertain(std::size_t call, std::size_t end) const;
    bool isApart(const Call& call) const;
    void addStates(std::size_t end, std::set<DiskState>& states) const;
    static void apply(const Call& call, Disk& disk);
    static void list(const Disk& disk, Node folder, const QString& path, DiskState& state);

    const QString top;
    const QStringList apart;
    std::map<QString, Node> nodes;  ///< by inode
    Node last = kTop;
    Disk before;
    Disk now;
    std::vector<Call> calls;
};

}  // namespace quorvelle::testing
