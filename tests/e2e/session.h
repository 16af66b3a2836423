#pragma once

#include <gmock/gmock.h>

#include <QJsonArray>

#include "support/fake_server.h"
#include "support/outcomes.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

inline const char kRedeem[] = "/api/invites/redeem?code=c%2B1&machine=pc";
inline const char kHandoff[] = "/api/sso/handoff";
inline const QString kMatch = "Subscriptions already match all server assignments.\n";
/// "$" stands for the server.
inline const QString kSubscribed = "subscribed 'app' (app @ $)\n";
inline const QString kGroups = "$ as 'ann' (member)\nGroups: dev, ops\n";

/// A server that lets Ann in and assigns the channel "app" to her, and a machine.
class Session : public ::testing::Test {
protected:
    Session() {
        // The home folder on Windows.
        box.environment.insert("USERPROFILE", box.path("."));
        assign(server, "'app'");
        server.onJson("POST", kRedeem, reply);
        server.onJson("POST", kHandoff, reply);
    }

    static void assign(FakeServer& to, const QByteArray& channels) {
        to.onJson("GET", "/api/me", json("{'channels':[" + channels + "]}"));
    }
    QStringList join() const {
        return QStringList{"join", server.url() + "//", "c+1"} + args("--machine pc");
    }
    QString at(const QString& line) const { return QString(line).replace('$', server.url()); }
    /// What a run says, standard output first, with the exit code at the end.
    static QString whole(const Outcome& got) {
        return got.out + '|' + got.err + '|' + QString::number(got.code);
    }
    QJsonObject entry() const { return box.config()["servers"][0].toObject(); }
    void joined(const QJsonArray& servers, const QJsonArray& subscriptions = {}) {
        box.writeConfig({{"schema_version", 2},
                         {"token", "top"},
                         {"servers", servers},
                         {"subscriptions", subscriptions}});
    }

    /// Runs the command with an entry and without, with an install root and without, and
    /// expects the entry to hold the new token, the right root, and its other keys.
    void expectEntryKept(const QStringList& words) {
        for (const QStringList& row : rows(R"(
                     | stored |       | stored
                     | stored | given | given
                     |        |       | Quorvelle-Builds
            no entry |        |       | Quorvelle-Builds)")) {
            QJsonObject stored{{"server", server.url()}, {"token", "old"}};
            stored["install_root"] = row[1].isEmpty() ? "" : box.path(row[1]);
            if (row[0].isEmpty()) {
                stored["tide_public_key"] = "k";
            }
            joined(row[0].isEmpty() ? QJsonArray{stored} : QJsonArray{});
            const QStringList root =
                row[2].isEmpty() ? QStringList() : QStringList{"--install-root", row[2]};
            EXPECT_EQ(box.run(words + root).code, 0);
            stored["token"] = "new";
            stored["install_root"] = box.path(row[3]);
            EXPECT_EQ(box.config()["servers"].toArray(), QJsonArray{stored});
        }
    }

    /// Expects the command to end well but for the reconciling after it.
    void expectToStandWhenReconcilingFails(const QStringList& words) {
        joined({});
        assign(server, "'ok','..'");
        Outcome got = box.run(words);
        EXPECT_EQ(got.err,
                  at("$: channel '..' cannot be a folder name - subscribe to it by hand\n"));
        EXPECT_TRUE(got.out.contains("subscribed 'ok' (ok @ ")) << got.out.toStdString();
        server.onJson("GET", "/api/me", {{"error", "busy"}}, 503);
        got = box.run(words);
        EXPECT_EQ(got.err, at("$: reconcile failed: busy\n"));
        EXPECT_FALSE(got.out.contains(kMatch));
        EXPECT_EQ(got.code, 2);
        EXPECT_EQ(entry()["token"].toString(), QString("new"));
        const QStringList lines = box.run(words + QStringList("--json")).out.split('\n');
        ASSERT_EQ(lines.size(), 3);
        EXPECT_EQ(object(lines[0]), QJsonObject({{"error", at("$: reconcile failed: busy")}}));
        EXPECT_EQ(object(lines[1])["changes"], QJsonArray());
    }

    /// Makes every save of the configuration fail.
    void refuseSaves() const { box.write("config/config.json.lock/in-the-way", ""); }
    const QString kSaveIt = "could not write config - your token (save it!): new";

    const QJsonObject reply = json(
        "{'token':'new','user':'ann','role':'member','groups':['dev','ops'],"
        "'channels':['app']}");
    FakeServer server;
    Sandbox box;
};

}  // namespace quorvelle::testing
