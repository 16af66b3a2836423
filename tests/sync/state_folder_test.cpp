#include "sync/state_folder.h"

#include <gmock/gmock.h>

#include <QDir>

#include "support/notation.h"
#include "support/process_runner.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(StatePath, StandsBesideTheInstallDirectory) {
    struct Row {
        const char* dir;
        const char* suffix;
        const char* path;
    };
    const Sandbox sandbox;
    for (const Row& row : {
             Row{"Games/Orbit", kInstalledMarkerSuffix, "Games/.quorvelle/Orbit.installed.json"},
             Row{"Games/Orbit/", kStagedMarkerSuffix, "Games/.quorvelle/Orbit.staged.json"},
             Row{"Games//x/../Orbit", kStagingSuffix, "Games/.quorvelle/Orbit.staging"},
             Row{"Games/./Orbit", kOldSuffix, "Games/.quorvelle/Orbit.old"},
             Row{"Games/a.b c", kStagingBuildSuffix, "Games/.quorvelle/a.b c.staging.build"},
             Row{"new/deeper/Orbit", kOldSuffix, "new/deeper/.quorvelle/Orbit.old"},
         }) {
        SCOPED_TRACE(row.dir);
        EXPECT_EQ(statePath(sandbox.path(row.dir), row.suffix), sandbox.path(row.path));
    }
    EXPECT_EQ(sandbox.tree("."), QStringList({"Games/.quorvelle/", "new/deeper/.quorvelle/"}));
}

TEST(StatePath, IsAbsoluteForARelativeDirectory) {
    const Sandbox sandbox;
    const QString relative = QDir::current().relativeFilePath(sandbox.path("app"));
    EXPECT_EQ(statePath(relative, ".old"), sandbox.path(".quorvelle/app.old"));
}

TEST(MigrateLegacyState, MovesWhatHasNoNewEntry) {
    struct Row {
        const char* name;
        const char* before;
        const char* after;
    };
    for (const Row& row : {
             Row{"nothing", "", ".quorvelle/"},
             Row{"every entry",
                 "app.installed.json=i app.old/f=o app.staged.json=s app.staging.build=b "
                 "app.staging/d/f=x app/f=1",
                 ".quorvelle/app.installed.json=i .quorvelle/app.old/f=o "
                 ".quorvelle/app.staged.json=s .quorvelle/app.staging.build=b "
                 ".quorvelle/app.staging/d/f=x app/f=1"},
             Row{"the new entry wins",
                 ".quorvelle/app.installed.json=new .quorvelle/app.staging/n=1 "
                 "app.installed.json=old app.staged.json=s app.staging/f=1",
                 ".quorvelle/app.installed.json=new .quorvelle/app.staged.json=s "
                 ".quorvelle/app.staging/n=1 app.installed.json=old app.staging/f=1"},
             Row{"a folder by a marker's name wins, too",
                 ".quorvelle/app.staged.json/x=1 app.staged.json=s",
                 ".quorvelle/app.staged.json/x=1 app.staged.json=s"},
             Row{"other names stay", "app.lock=1 app.swap=1 app2.old/f=1 other.staged.json=1",
                 ".quorvelle/ app.lock=1 app.swap=1 app2.old/f=1 other.staged.json=1"},
             Row{"a file where the state folder belongs", ".quorvelle=f app.old/f=o",
                 ".quorvelle=f app.old/f=o"},
         }) {
        SCOPED_TRACE(row.name);
        const Sandbox sandbox;
        for (const QString& entry : args(row.before)) {
            sandbox.write(entry.section(u'=', 0, 0), entry.section(u'=', 1).toUtf8());
        }
        migrateLegacyState(sandbox.path("app/"));
        EXPECT_EQ(sandbox.tree("."), args(row.after));
    }
}

}  // namespace quorvelle::testing
