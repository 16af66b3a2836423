#include "launch/launch_spec.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "support/notation.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

namespace {

const QString kOutside =
    "the executable is outside the install directory (enable \"allow launching outside\" for this "
    "target to run it)";

class LaunchSpecs : public ::testing::Test {
protected:
    LaunchSpec resolve(const QString& dir, QString target, const QStringList& extras = {}) const {
        return resolveTarget({{"dir", QString(dir).replace("ROOT", box.path(""))}},
                             json(target.replace("ROOT", box.path("")).toUtf8()), extras);
    }

    Sandbox box;
};

}  // namespace

/// The last cell: the program, or the error. ROOT stands for the sandbox.
TEST_F(LaunchSpecs, NameTheProgramOrTheError) {
    for (const char* file : {"app/bin/tool", "app-2/tool", "other/tool"}) {
        box.write(file, "");
    }
    for (const QStringList& row : rows(R"(
        ROOT/app        | {'exe':'bin/tool'}                              | ROOT/app/bin/tool
        ROOT/app/       | {'exe':'./bin//../bin/tool'}                    | ROOT/app/bin/tool
        ROOT/x/../app/. | {'exe':'bin/tool'}                              | ROOT/app/bin/tool
        ROOT/app        | {'exe':'ROOT/app/bin/tool'}                      | ROOT/app/bin/tool
        ROOT/app        | {'exe':'../app-2/tool'}                         | ROOT/app-2/tool
        ROOT/app        | {'exe':'../other/tool'}                         | OUTSIDE
        ROOT/app        | {'exe':'../App/tool'}                           | OUTSIDE
        ROOT/app        | {'exe':'ROOT/other/tool','allow_outside':'true'} | OUTSIDE
        ROOT/app        | {'exe':'ROOT/other/tool','allow_outside':true}   | ROOT/other/tool
        ROOT/app        | {'exe':'bin/gone'}                              | MISSING ROOT/app/bin/gone
        ROOT/app        | {'exe':'bin'}                                   | MISSING ROOT/app/bin
        ROOT/app        | {'exe':''}                                      | NONE
                       | {'exe':'ROOT/app/bin/tool'}                      | NONE
    )")) {
        SCOPED_TRACE(row.join('|').toStdString());
        QString expected = QString(row[2]).replace("ROOT", box.path(""));
        if (expected.startsWith("MISSING ")) {
            expected = "not found: " + QDir::toNativeSeparators(expected.mid(8)) +
                       " (has this subscription synced yet?)";
        }
        expected.replace("OUTSIDE", kOutside)
            .replace("NONE", "this launch target has no executable configured");
        const LaunchSpec spec = resolve(row[0], row[1]);
        EXPECT_EQ(spec.ok ? spec.program : spec.error, expected);
        EXPECT_EQ(spec.ok, spec.error.isEmpty());
    }
}

/// The file's kind, and the start with the extra arguments "x" and "y z".
TEST_F(LaunchSpecs, WrapScriptsByTheSuffixOfTheFileName) {
    for (const QStringList& row : rows(R"(
        tool          | program  | FILE;a;x;y z
        v1.txt/tool   | program  | FILE;a;x;y z
        tool.         | program  | FILE;a;x;y z
        a.b.EXE       | program  | FILE;a;x;y z
        x.com         | program  | FILE;a;x;y z
        y.Scr         | program  | FILE;a;x;y z
        SETUP.BAT     | script   | cmd.exe;/c;FILE;a;x;y z
        do.cmd        | script   | cmd.exe;/c;FILE;a;x;y z
        über all.Ps1  | script   | powershell.exe;-ExecutionPolicy;Bypass;-File;FILE;a;x;y z
        readme.txt    | document | FILE;a;x;y z
        .hidden       | document | FILE;a;x;y z
        exe.d         | document | FILE;a;x;y z
    )")) {
        SCOPED_TRACE(row[0].toStdString());
        box.write("app/" + row[0], "");
        const QString file = box.path("app/" + row[0]);
        const LaunchSpec spec =
            resolve("ROOT/app", "{'args':'a','exe':'" + row[0] + "'}", {"x", "y z"});
        const QString kind = spec.isProgram ? "program" : (spec.isScript ? "script" : "document");
        EXPECT_EQ(kind, row[1]);
        EXPECT_FALSE(spec.isProgram && spec.isScript);
        const ProcessStart start = processFor(spec);
        EXPECT_EQ(
            (QStringList(start.program) + start.arguments).join(';'),
            QString(row[2]).replace("FILE", spec.isScript ? QDir::toNativeSeparators(file) : file));
        EXPECT_EQ(start.workingDir, box.path("app"));
    }
}

TEST_F(LaunchSpecs, CountALinkByWhatItLeadsTo) {
    box.write("app/file", "");
    box.write("other/tool", "");
    ASSERT_TRUE(QFile::link(box.path("other/tool"), box.path("app/link")));
    ASSERT_TRUE(QFile::link(box.path("nowhere"), box.path("app/broken")));
    EXPECT_EQ(resolve("ROOT/app", "{'exe':'link'}").program, box.path("app/link"));
    EXPECT_EQ(resolve("ROOT/app", "{'exe':'broken'}").error,
              "not found: " + box.path("app/broken") + " (has this subscription synced yet?)");
}

}  // namespace quorvelle::testing
