#pragma once

#include "support/server_fixture.h"

namespace quorvelle::testing {

inline const char kRedeem[] = "/api/invites/redeem?code=c%2B1&machine=pc";
inline const char kHandoff[] = "/api/sso/handoff";
inline const QString kMatch = "Subscriptions already match all server assignments.\n";
/// "$" stands for the server.
inline const QString kSubscribed = "subscribed 'app' (app @ $)\n";
inline const QString kGroups = "$ as 'ann' (member)\nGroups: dev, ops\n";

/// A server that lets Ann in and assigns the channel "app" to her, and a machine.
class Session : public ProgramTest {
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
        box.writeConfig({{"token", "top"}, {"servers", servers}, {"subscriptions", subscriptions}});
    }

    /// Makes every save of the configuration fail.
    void refuseSaves() const { box.write("config/config.json.lock/in-the-way", ""); }
    const QString kSaveIt = "could not write config - your token (save it!): new";

    const QJsonObject reply = json(
        "{'token':'new','user':'ann','role':'member','groups':['dev','ops'],"
        "'channels':['app']}");
};

}  // namespace quorvelle::testing
