#include "account/reconcile_plan.h"
#include "support/notation.h"

namespace quorvelle::testing {

namespace {

const QJsonObject kEntry = json("{'server':'a','token':'t','install_root':'/r'}");

/// Subscriptions written as "name=channel@server", managed ones with "*" at the end.
QJsonArray subscriptions(const QString& line) {
    QJsonArray result;
    for (const QString& word : args(line)) {
        const QString server = word.section(u'@', 1);
        result.append(QJsonObject{{"name", word.section(u'=', 0, 0)},
                                  {"channel", word.section(u'@', 0, 0).section(u'=', 1)},
                                  {"server", server.section(u'*', 0, 0)},
                                  {"managed", server.endsWith(u'*')}});
    }
    return result;
}

QString shortForm(const QJsonObject& document) {
    QStringList words;
    for (const QJsonValue& entry : document["subscriptions"].toArray()) {
        words.append(entry["name"].toString() + '=' + entry["channel"].toString() + '@' +
                     entry["server"].toString() + (entry["managed"].toBool() ? "*" : ""));
    }
    return words.join(' ');
}

ReconcilePlan plan(const QString& before, const QString& assigned) {
    return planReconcile({{"subscriptions", subscriptions(before)}}, kEntry,
                         *assignedChannels(json("{'channels':[" + assigned.toUtf8() + "]}")));
}

}  // namespace

TEST(ReconcilePlan, AddsAndRetiresManagedSubscriptionsOfTheServer) {
    for (const QStringList& row : rows(R"(
        new         |                     | 'x','y'   | x=x@a* y=y@a*
        none left   | x=x@a* y=y@a        |           | y=y@a
        by hand     | x=x@a n=y@a         | 'x','y'   | x=x@a n=y@a
        renamed     | n=x@a*              | 'x'       | n=x@a*
        elsewhere   | x=x@b* y=y@b/*      | 'z'       | x=x@b* y=y@b/* z=z@a*
        slashes     | x=x@a//* y=y@a/*    | 'x'       | x=x@a//*
        taken twice | x=x@b x-2=y@b       | 'x'       | x=x@b x-2=y@b x-3=x@a*
        freed       | x=old@a* z=z@a*     | 'x','z'   | z=z@a* x=x@a*
        case        | X=X@a*              | 'x'       | x=x@a*
        odd names   |                     | '..x','-' | ..x=..x@a* -=-@a*
        like states |                     | 'quorve~','a~1' | quorve~=quorve~@a* a~1=a~1@a*)")) {
        SCOPED_TRACE(row[0].toStdString());
        const ReconcilePlan got = plan(row[1], row[2]);
        EXPECT_EQ(shortForm(got.document), row[3]);
        EXPECT_EQ(got.changes.isEmpty(), row[1] == row[3]);
        EXPECT_EQ(got.refused, QStringList());
    }
}

TEST(ReconcilePlan, SaysWhatChangedInOrderAndKeepsTheRest) {
    const QJsonObject before = json(
        "{'own':1,'servers':[],'subscriptions':[7,{'name':'n%2','channel':'old','server':'a',"
        "'managed':true},{'name':'x','own':2}]}");
    const ReconcilePlan got = planReconcile(before, kEntry, {"x", "%1"});
    EXPECT_EQ(got.changes, (QStringList{"retired 'n%2' (no longer assigned; files kept)",
                                        "subscribed 'x-2' (x @ a)", "subscribed '%1' (%1 @ a)"}));
    EXPECT_EQ(QString::fromStdString(text(got.document)).replace(drive() + "/r", "/r"),
              "{'own':1,'servers':[],'subscriptions':[7,{'name':'x','own':2},"
              "{'channel':'x','dir':'/r/x','interval_seconds':-1,'managed':true,'name':'x-2',"
              "'self_heal':-1,'server':'a','token':'t'},"
              "{'channel':'%1','dir':'/r/%1','interval_seconds':-1,'managed':true,'name':'%1',"
              "'self_heal':-1,'server':'a','token':'t'}]}");
    EXPECT_EQ(planReconcile({}, json("{'server':'a','install_root':'/'}"), {"x"})
                  .document["subscriptions"][0]["dir"]
                  .toString(),
              drive() + "/x");
}

/// The cells: what is taken ("~": no folder), and the folders of the channels "x" and "y".
TEST(ReconcilePlan, GivesEverySubscriptionAFolderOfItsOwn) {
    for (const QStringList& row : rows(R"(
        nobody near       | /q/x /r2/x /r/xx ~     | /r/x /r/y
        the same          | /r/x                   | /r/x-2 /r/y
        spelled otherwise | /r/../r//x/ /r/x-2     | /r/x-3 /r/y
        inside            | /r/x/sub/deep          | /r/x-2 /r/y
        around            | /r                     |
        far around        | /                      |)")) {
        SCOPED_TRACE(row[0].toStdString());
        QJsonArray before;
        for (const QString& dir : args(row[1])) {
            before.append(QJsonObject{{"name", dir}, {"dir", dir == "~" ? "" : drive() + dir}});
        }
        const ReconcilePlan got = planReconcile({{"subscriptions", before}}, kEntry, {"x", "y"});
        QStringList added;
        for (const QJsonValue& entry : got.document["subscriptions"].toArray()) {
            if (entry["managed"].toBool()) {
                added.append(entry["dir"].toString().mid(drive().size()));
            }
        }
        EXPECT_EQ(added, args(row[2]));
        const QString refused = "a: channel '%1' has no free folder below " +
                                QDir::toNativeSeparators(drive() + "/r") +
                                " - subscribe to it by hand";
        EXPECT_EQ(got.refused, added.isEmpty() ? QStringList({refused.arg("x"), refused.arg("y")})
                                               : QStringList());
    }
}

TEST(ReconcilePlan, RefusesChannelsThatCannotBeOneFolder) {
    for (const char* channel : {"", ".", "..", "a/b", "/", R"(a\\b)", R"(a\u0000b)", ".quorvelle",
                                ".Quorvelle", "QUORVE~1", "qu0A9f~12"}) {
        SCOPED_TRACE(channel);
        const QString quoted = QString("'%1'").arg(channel);
        const QString name = json("{'c':" + quoted.toUtf8() + "}")["c"].toString();
        const ReconcilePlan got = plan("", quoted + ",'ok'," + quoted);
        EXPECT_EQ(shortForm(got.document), QString("ok=ok@a*"));
        EXPECT_EQ(got.refused, QStringList("a: channel '" + name +
                                           "' cannot be a folder name - subscribe to it by hand"));
    }
    EXPECT_EQ(plan("n=..@a", "'..'").refused, QStringList());
}

TEST(AssignedChannels, AreReadFromAListOfNamesAlone) {
    EXPECT_EQ(assignedChannels(json("{'channels':[]}")), QStringList());
    EXPECT_EQ(assignedChannels(json("{'channels':['a','']}")), QStringList({"a", ""}));
    for (const char* reply :
         {"{}", "{'channels':null}", "{'channels':'a'}", "{'channels':['a',7]}"}) {
        EXPECT_EQ(assignedChannels(json(reply)), std::nullopt) << reply;
    }
}

}  // namespace quorvelle::testing
