#include "e2e/session.h"

namespace quorvelle::testing {
namespace {

/// Does what a browser does after the person has signed in.
const char kFakeBrowser[] = R"(#!/bin/bash
echo "$1" >>opened
exec 3<>/dev/tcp/127.0.0.1/${1##*=}
printf 'GET /?handoff=abc HTTP/1.1\r\n\r\n' >&3
cat <&3 >page
)";

class Login : public Session {
protected:
    Login() {
        box.write("bin/xdg-open", kFakeBrowser);
        QFile::setPermissions(box.path("bin/xdg-open"), QFile::ReadOwner | QFile::ExeOwner);
        box.environment.insert("PATH", box.path("bin") + ":" + box.environment.value("PATH"));
    }

    QStringList login() const { return {"login", server.url() + "/"}; }
};

TEST_F(Login, GoesThroughTheBrowser) {
    const QString opening =
        "Opening your browser to sign in at $ ...\nIf it does not open, use this link:\n  ";
    const Outcome got = box.run(login());
    const QString link = box.read("opened").trimmed();
    EXPECT_TRUE(link.startsWith(at("$/api/sso/start?port="))) << link.toStdString();
    EXPECT_EQ(whole(got), at(opening + link + "\nSigned in to " + kGroups + kSubscribed) + "||0");
    EXPECT_EQ(server.requests()[0].body, R"({"code":"abc"})");
    EXPECT_EQ(server.requests()[0].header("Authorization"), "(none)");

    QJsonObject result = reply;
    result["note"] = "Welcome";
    result["groups"] = QJsonArray();
    server.onJson("POST", kHandoff, result);
    EXPECT_TRUE(box.run(login()).out.endsWith("Groups: (none)\nNote: Welcome\n" + kMatch));
    const Outcome json = box.run(login() + QStringList("--json"));
    result["changes"] = QJsonArray();
    EXPECT_EQ(json.json(), result);
    EXPECT_TRUE(json.err.startsWith(at(opening))) << json.err.toStdString();
}

TEST_F(Login, LeavesTheBrowserAlone) {
    const char kScript[] = R"(set -o pipefail
        "$0" login "$1" --no-browser --install-root r |
            { read -r; read -r; read -r link; bin/xdg-open "$link" >/dev/null; cat; })";
    const Outcome got = box.runProgram("bash", {"-c", kScript, quorvelleProgram(), server.url()});
    EXPECT_EQ(whole(got), at("Signed in to " + kGroups + kSubscribed) + "||0");
    EXPECT_EQ(box.read("opened").count('\n'), 1);
    EXPECT_TRUE(box.read("page").contains("<h2>Signed in</h2>"));
}

TEST_F(Login, ReportsFailures) {
    refuseSaves();
    EXPECT_TRUE(box.run(login()).err.endsWith(kSaveIt + "\n"));
    for (const QStringList& row : rows(R"(
        403 | {'error':'spent'}    | sign-in failed (HTTP 403): spent
        200 | {'user':'ann'}       | sign-in failed: the reply holds no token
        200 | {'token':'new'}      | could not write config - your token (save it!): new)")) {
        server.onJson("POST", kHandoff, json(row[1].toUtf8()), row[0].toInt());
        const Outcome got = box.run(login() + QStringList("--json"));
        EXPECT_EQ(got.json(), (QJsonObject{{"error", row[2]}}));
        EXPECT_EQ(got.code, 2);
    }
}

}  // namespace
}  // namespace quorvelle::testing
