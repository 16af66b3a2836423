#include "launch/launch_target.h"

#include <QFile>

#include "launch/launch_spec.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

namespace {

QJsonArray list(QByteArray text) {
    text.replace("EMPTY",
                 "'working_dir':'','admin_args':'','pre_args':'','post_args':'',"
                 "'ignore_server':false,'favorite':false,'primary':false");
    return json("{'list':" + text + '}').value("list").toArray();
}

const QString kOutside =
    "the executable is outside the install directory (enable \"allow launching outside\" for this "
    "target to run it)";

struct LaunchSpecs : ::testing::Test {
    LaunchSpec resolve(const QString& dir, QString target, const QStringList& extras = {}) const {
        return resolveTarget({{"dir", QString(dir).replace("ROOT", box.path(""))}},
                             json(target.replace("ROOT", box.path("")).toUtf8()), extras);
    }

    Sandbox box;
};

}  // namespace

TEST(LaunchTargets, AreMerged) {
    const std::tuple<const char*, const char*, const char*, const char*> table[] = {
        {"nothing", "[]", "{}", "[]"},
        {"no other key of an administrator's target is copied",
         R"([{'label':'L','exe':'e','args':'a','working_dir':'w','primary':true,'x':1,'favorite':true,
              'allow_outside':true,'pre_args':'p','post_args':'q','ignore_server':true,'akey':'k'}])",
         "{}",
         R"([{'source':'admin','akey':'L\u001fe','label':'L','exe':'e','working_dir':'w',
              'admin_args':'a','pre_args':'','post_args':'','ignore_server':false,
              'favorite':false,'primary':true}])"},
        {"an override follows label and executable, and adjusts nothing else",
         "[{'label':'L','exe':'e','args':'new'},{'label':'L','exe':'f'},7,{}]",
         R"({'admin_overrides':{'L\u001fe':{'pre_args':'p','post_args':'q','ignore_server':true,
              'favorite':true,'primary':true,'exe':'evil','allow_outside':true},'L':{'pre_args':'z'}}})",
         R"([{'source':'admin','akey':'L\u001fe','label':'L','exe':'e','working_dir':'',
              'admin_args':'new','pre_args':'p','post_args':'q','ignore_server':true,
              'favorite':true,'primary':false},
             {'source':'admin','akey':'L\u001ff','label':'L','exe':'f',EMPTY},
             {'source':'admin','akey':'\u001f','label':'','exe':'',EMPTY}])"},
        {"the user's stand last, with their places and all their keys", "[{'label':'b'}]",
         "{'launch_targets':[{'label':'b','x':[1],'source':'admin'},'no',{'allow_outside':true}]}",
         R"([{'source':'admin','akey':'b\u001f','label':'b','exe':'',EMPTY},
             {'source':'user','uindex':0,'label':'b','x':[1]},
             {'source':'user','uindex':2,'allow_outside':true}])"},
    };
    for (const auto& [name, admin, subscription, merged] : table) {
        const QJsonArray got = mergedTargets(list(admin), json(subscription));
        EXPECT_EQ(text({{"list", got}}), text({{"list", list(merged)}})) << name;
    }
}

/// Of each list of targets: "label" or "*label" for a primary one.
TEST(LaunchTargets, AreSelected) {
    for (const QStringList& row : rows(R"(
        a *b *c |   | 1
        a       |   | 0
        a *b a  | a | 0
        *a b    | b | 1
        a b     |   | 'app' has 2 launch targets and no primary - pick one with --target <label>
        a b     | A | no launch target labelled 'A'
        a %2    | %1 | no launch target labelled '%1'
                | a | 'app' has no launch targets (the channel admin defines them: quorvelle channel launch add ...)
    )")) {
        SCOPED_TRACE(row.join('|').toStdString());
        QJsonArray targets;
        for (QString label : args(row[0])) {
            const bool primary = label.startsWith('*');
            targets.append(QJsonObject{
                {"label", label.remove('*')}, {"primary", primary}, {"at", targets.size()}});
        }
        const Selection got = selectTarget(targets, "app", row[1]);
        EXPECT_EQ(got.error.isEmpty() ? QString::number(got.target["at"].toInt()) : got.error,
                  row[2]);
    }
}

/// The arguments in the order in which they are passed, joined with ";".
TEST(LaunchTargets, HaveArguments) {
    for (const QStringList& row : rows(R"(
        {}                                                           |
        {'args':'a','post_args':'p'}                                 | a;p
        {'pre_args':'','args':'left out','admin_args':'s'}           | s
        {'pre_args':'u v','admin_args':'s t','post_args':'w'}        | u;v;s;t;w
        {'pre_args':'u','admin_args':'s','post_args':'w','ignore_server':true} | u;w
        {'args':'a','admin_args':'s','ignore_server':'yes'}          | a;s
        {'args':'  a \t b  '}                                        | a;b
        {'args':'\"a b\" c\"d e\"f'}                                 | a b;cd ef
        {'args':'say \"\"\"hi\"\"\" \"a \"\"\"b\"\"\" c\"'}          | say;"hi";a "b" c
        {'args':'\"grüße an\" 日本 \\\\x y\\\\'}                     | grüße an;日本;\\x;y\\
        {'args':'a \"open end'}                                      | a;open end
        {'args':'$HOME *.txt `x`'}                                   | $HOME;*.txt;`x`
    )")) {
        SCOPED_TRACE(row[0].toStdString());
        EXPECT_EQ(targetArguments(json(row[0].toUtf8())).join(';'), row[1]);
    }
}

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
