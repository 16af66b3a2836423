#include "sync/swap.h"

#include <QFile>
#include <map>

#include "support/process_runner.h"
#include "sync/markers.h"

namespace quorvelle::testing {

namespace {

/// What may stand on disk. The tables name these states; "app" is the install directory,
/// its file tells which build it holds.
const std::map<QString, QString> kEntries{
    {"app=file", "file"},
    {"app/f=installed", "install"},
    {"app/f=previous", "previous"},
    {"app/f=staged", "new"},
    {".quorvelle/app.old/f=previous", "old"},
    {".quorvelle/app.staging/f=staged", "staging"},
    {".quorvelle/app.replaced/f=installed", "kept"},
    {".quorvelle/app.replaced-2/f=installed", "kept-2"},
    {".quorvelle/app.replaced=theirs", "taken"},
    {".quorvelle/app.swap=", "record"},
    {".quorvelle/app.installed.json/x=", "in-the-way"},
};

const StagedMarker kBuildTwo{"b2", "stable", 5};

/// What a record may say: "update" and "keep" of a swap under way, "first" of one where
/// nothing stood, "waits" and "keeps" of none under way.
const std::map<QString, SwapRecord> kSwapRecords{
    {"update", {"b2", "stable", ".old", false, true}},
    {"keep", {"b2", "stable", ".replaced", true, true}},
    {"first", {"b2", "stable", "", false, true}},
    {"waits", {"b2", "stable", ".old", false, false}},
    {"keeps", {"b2", "stable", ".replaced", true, false}},
};

void lay(const Sandbox& sandbox, const QString& states) {
    for (const QString& state : args(states)) {
        if (state == "marker") {
            writeStagedMarker(sandbox.path("app"), kBuildTwo);
        } else if (state.startsWith("b")) {
            writeInstalledMarker(sandbox.path("app"), {state, "stable"});
        } else if (kSwapRecords.contains(state)) {
            writeSwapRecord(sandbox.path("app"), kSwapRecords.at(state));
        }
        for (const auto& [entry, word] : kEntries) {
            if (word == state) {
                sandbox.write(entry.section(u'=', 0, 0), entry.section(u'=', 1).toUtf8());
            }
        }
    }
}

/// The states on disk in alphabetical order, anything unexpected as it is.
QString standing(const Sandbox& sandbox) {
    QStringList states;
    for (const QString& entry : sandbox.tree(".")) {
        const auto known = kEntries.find(entry);
        if (known != kEntries.end()) {
            states.append(known->second);
        } else if (entry.startsWith(".quorvelle/app.staged.json=")) {
            states.append(readStagedMarker(sandbox.path("app")).build == "b2" ? "marker" : entry);
        } else if (entry.startsWith(".quorvelle/app.installed.json=")) {
            const InstalledMarker marker = readInstalledMarker(sandbox.path("app"));
            states.append(marker.channel == "stable" ? marker.build : entry);
        } else if (entry.startsWith(".quorvelle/app.swap={")) {
            const SwapRecord record = *readSwapRecord(sandbox.path("app"));
            states.append(record.moving ? "moves" : record.keep ? "keeps" : "waits");
        } else if (entry != ".quorvelle/") {
            states.append(entry);
        }
    }
    states.sort();
    return states.join(u' ');
}

}  // namespace

/// Each row: the states before, the result and what was kept, the states after.
TEST(SwapInStaged, LeavesOneWholeBuildAndWhatNothingVouchesFor) {
    for (const QStringList& row : rows(R"(
                                       | blocked |
        staging                        | swapped | b2 new
        old                            | blocked | old
        old staging                    | swapped | b2 new
        b1 install                     | blocked | b1 install
        b1 install staging             | swapped | b2 new
        b1 install old staging         | swapped | b2 new
        b1 install old record staging  | swapped | b2 new
        install marker staging         | swapped | b2 new
        install record staging         | swapped | b2 new
        install staging waits          | swapped | b2 new
        b2 install staging             | swapped | b2 new
        file                           | blocked | file
        file staging                   | blocked | file marker staging
        file old staging               | blocked | file marker old staging waits
        install staging                | swapped .replaced   | b2 kept new
        install keeps staging          | swapped .replaced   | b2 kept new
        install keeps marker staging   | swapped .replaced   | b2 kept new
        install old staging            | swapped .replaced   | b2 kept new
        install staging taken          | swapped .replaced-2 | b2 kept-2 new taken)")) {
        SCOPED_TRACE(row[0].toStdString());
        const Sandbox sandbox;
        lay(sandbox, row[0]);
        const auto [result, kept] = swapInStaged(sandbox.path("app"), kBuildTwo);
        const QStringList words = args(row[1]);
        EXPECT_EQ(result, words[0] == "swapped" ? SwapResult::kSwapped : SwapResult::kNotMovable);
        EXPECT_EQ(kept, words.size() < 2 ? "" : sandbox.path(".quorvelle/app" + words[1]));
        EXPECT_EQ(standing(sandbox), row[2]);
    }
}

TEST(SwapInStaged, KeepsNoEmptyDirectory) {
    const Sandbox sandbox;
    lay(sandbox, "staging");
    ASSERT_TRUE(QDir().mkpath(sandbox.path("app")));
    EXPECT_EQ(swapInStaged(sandbox.path("app"), kBuildTwo).kept, QString());
    EXPECT_EQ(standing(sandbox), QString("b2 new"));
}

TEST(RecoverSwap, BringsASwapCutShortToOneSide) {
    for (const QStringList& row : rows(R"(
        no swap, first install         | marker staging                  | marker staging
        no swap, blocked               | install marker staging          | install marker staging
        no swap, staging gone          | install marker                  | install marker
        no swap, leftover              | install old                     | install old
        no swap, nothing staged        | old                             | old
        no record, between the renames | marker old staging              | marker previous staging
        before the first rename        | b1 install marker staging update | b1 install marker staging
        before the staged marker       | b1 install staging update       | b1 install staging
        before the only rename         | first marker staging            | marker staging
        between the renames            | b1 marker old staging update    | b1 marker previous staging
        between, the same build        | b2 marker old staging update    | b2 marker previous staging
        between the renames, no marker | b1 old staging update           | b1 previous staging
        after the second rename        | b1 marker new old update        | b2 new
        after it, no marker            | b1 new old update               | b2 new
        after the only rename          | first marker new                | b2 new
        after its record as installed  | b2 new old update               | b2 new
        the staged build is nowhere    | b1 marker old update            | b1 marker previous
        the new build is gone again    | b2 marker old update            | b2 marker old waits
        a file in the way              | file marker old staging update  | file marker old staging waits
        theirs, before the renames     | install keep marker staging     | install keeps marker staging
        theirs, before staged marker   | install keep staging            | install keeps staging
        theirs, staging gone           | install keep marker             | install keeps marker
        theirs, between the renames    | keep kept marker staging        | install keeps marker staging
        theirs, second rename lost     | keep kept                       | install keeps
        theirs, after them             | keep kept marker new            | b2 kept new
        theirs, blocked                | install keeps marker staging    | install keeps marker staging
        leftover of a swap, no install | b1 marker old staging waits     | b1 marker old staging waits
        the same, first install        | b1 first marker old staging     | b1 marker old staging waits
        leftover of a blocked swap     | b1 install marker old staging waits | b1 install marker staging
        leftover of a swap             | b2 new old waits                | b2 new
        installed, but not recorded    | marker new waits                | marker new waits
        old record, before the renames | install marker record staging   | install marker staging
        old record, the only rename    | marker record staging           | marker staging
        old record, between            | marker old record staging       | marker previous staging
        old record, between, no marker | old record staging              | previous staging
        old record, after the renames  | marker new old record           | b2 new
        old record, recorded           | new record                      | new
        old record, cannot be recorded | in-the-way marker new record    | in-the-way marker new waits
        old record, staged is nowhere  | marker old record               | marker previous
        old record, a file in the way  | file marker record              | file marker)")) {
        SCOPED_TRACE(row[0].toStdString());
        const Sandbox sandbox;
        lay(sandbox, row[1]);
        recoverSwap(sandbox.path("app"));
        EXPECT_EQ(standing(sandbox), row[2]);
        recoverSwap(sandbox.path("app"));
        EXPECT_EQ(standing(sandbox), row[2]) << "a second run changed something";
    }
}

TEST(SwapInStaged, RemovesLinksWithoutFollowingThem) {
    for (const char* link : {".quorvelle/app.old/link", ".quorvelle/app.old", "app/link"}) {
        for (const char* target : {"outside", "outside/keep", "missing"}) {
            SCOPED_TRACE(std::string(link) + " -> " + target);
            const Sandbox sandbox;
            lay(sandbox, "b1 install staging");
            sandbox.write("outside/keep", "kept");
            sandbox.write(".quorvelle/app.old.other", "kept");
            if (QString(link).endsWith("/link")) {
                sandbox.write(QString(link) + ".file", "");
            }
            ASSERT_TRUE(QFile::link(sandbox.path(target), sandbox.path(link)));
            EXPECT_EQ(swapInStaged(sandbox.path("app"), kBuildTwo).result, SwapResult::kSwapped);
            EXPECT_EQ(standing(sandbox),
                      QString(".quorvelle/app.old.other=kept b2 new outside/keep=kept"));
        }
    }
}

}  // namespace quorvelle::testing
