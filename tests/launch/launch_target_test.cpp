#include "launch/launch_target.h"

#include <gtest/gtest.h>

#include "support/notation.h"

namespace quorvelle::testing {

namespace {

QJsonArray list(QByteArray text) {
    text.replace("EMPTY",
                 "'working_dir':'','admin_args':'','pre_args':'','post_args':'',"
                 "'ignore_server':false,'favorite':false,'primary':false");
    return json("{'list':" + text + '}').value("list").toArray();
}

}  // namespace

TEST(LaunchTargets, AreMerged) {
    struct Row {
        const char* name;
        const char* admin;
        const char* subscription;
        const char* merged;
    };
    const Row table[] = {
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
    for (const Row& row : table) {
        SCOPED_TRACE(row.name);
        const QJsonArray merged = mergedTargets(list(row.admin), json(row.subscription));
        EXPECT_EQ(text({{"list", merged}}), text({{"list", list(row.merged)}}));
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

}  // namespace quorvelle::testing
