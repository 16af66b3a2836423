#include "sync/swap.h"

#include <gmock/gmock.h>

#include <QFile>
#include <map>

#include "support/notation.h"
#include "support/process_runner.h"
#include "sync/markers.h"
#include "sync/state_folder.h"

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
    {".quorvelle/app.swap=", "record"},
};

void lay(const Sandbox& sandbox, const QString& states) {
    for (const QString& state : args(states)) {
        if (state == "marker") {
            writeStagedMarker(sandbox.path("app"), {"b2", "stable", 5});
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
            states.append("recorded:" + marker.build + ':' + marker.channel);
        } else if (entry != ".quorvelle/") {
            states.append(entry);
        }
    }
    states.sort();
    return states.join(u' ');
}

}  // namespace

TEST(SwapInStaged, LeavesOneWholeBuildInEveryCase) {
    for (const QStringList& row : rows(R"(
                                    | not movable |
        staging                     | swapped     | new
        old                         | not movable | old
        old staging                 | swapped     | new
        install                     | not movable | install
        install staging             | swapped     | new
        install old staging         | swapped     | new
        install old record staging  | swapped     | new
        install marker staging      | swapped     | marker new
        file                        | not movable | file
        file staging                | not movable | file staging)")) {
        SCOPED_TRACE(row[0].toStdString());
        const Sandbox sandbox;
        lay(sandbox, row[0]);
        EXPECT_EQ(swapInStaged(sandbox.path("app")),
                  row[1] == "swapped" ? SwapResult::kSwapped : SwapResult::kNotMovable);
        EXPECT_TRUE(standing(sandbox).contains("record") || row[1] != "swapped");
        endSwap(sandbox.path("app"));
        EXPECT_EQ(standing(sandbox), row[2]);
    }
}

TEST(RecoverSwap, BringsASwapCutShortToOneSide) {
    for (const QStringList& row : rows(R"(
        no swap, first install                 | marker staging            | marker staging
        no swap, blocked                       | install marker staging    | install marker staging
        no swap, staging gone                  | install marker            | install marker
        no swap, leftover                      | install old               | install old
        no swap, nothing staged                | old                       | old
        no record, between the renames         | marker old staging        | marker previous staging
        before the first rename       | install marker record staging     | install marker staging
        before it, a leftover         | install marker old record staging | install marker old staging
        before the only rename                 | marker record staging     | marker staging
        between the renames                    | marker old record staging | marker previous staging
        between the renames, no marker         | old record staging        | previous staging
        after the second rename                | marker new old record     | new recorded:b2:stable
        after the only rename                  | marker new record         | new recorded:b2:stable
        after its record as installed          | new record                | new
        the staged build is nowhere            | marker old record         | marker previous
        a file in the way             | file marker old record staging    | file marker old staging
        a file in the way, no staging          | file marker record        | file marker)")) {
        SCOPED_TRACE(row[0].toStdString());
        const Sandbox sandbox;
        lay(sandbox, row[1]);
        recoverSwap(sandbox.path("app"));
        EXPECT_EQ(standing(sandbox), row[2]);
        recoverSwap(sandbox.path("app"));
        EXPECT_EQ(standing(sandbox), row[2]) << "a second run changed something";
    }
}

TEST(RecoverSwap, TriesAgainWhenTheBuildCannotBeRecorded) {
    const Sandbox sandbox;
    lay(sandbox, "marker new record");
    sandbox.write(".quorvelle/app.installed.json/x", "");
    recoverSwap(sandbox.path("app"));
    EXPECT_TRUE(QFile::exists(statePath(sandbox.path("app"), kSwapSuffix)));
    EXPECT_EQ(readStagedMarker(sandbox.path("app")).build, QString("b2"));
}

TEST(SwapInStaged, RemovesLinksWithoutFollowingThem) {
    for (const char* link : {".quorvelle/app.old/link", ".quorvelle/app.old", "app/link"}) {
        for (const char* target : {"outside", "outside/keep", "missing"}) {
            SCOPED_TRACE(std::string(link) + " -> " + target);
            const Sandbox sandbox;
            lay(sandbox, "install staging");
            sandbox.write("outside/keep", "kept");
            sandbox.write(".quorvelle/app.old.other", "kept");
            if (QString(link).endsWith("/link")) {
                sandbox.write(QString(link) + ".file", "");
            }
            ASSERT_TRUE(QFile::link(sandbox.path(target), sandbox.path(link)));
            EXPECT_EQ(swapInStaged(sandbox.path("app")), SwapResult::kSwapped);
            endSwap(sandbox.path("app"));
            EXPECT_EQ(standing(sandbox),
                      QString(".quorvelle/app.old.other=kept new outside/keep=kept"));
        }
    }
}

}  // namespace quorvelle::testing
