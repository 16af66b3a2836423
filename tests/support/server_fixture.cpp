#include "support/server_fixture.h"

namespace quorvelle::testing {

namespace {

void checkWire(const SeenRequest& request, const QString& body) {
    EXPECT_EQ(request.header("Authorization"), "Bearer t");
    if (body.isEmpty()) {
        EXPECT_EQ(request.body, "");
        EXPECT_EQ(request.header("Content-Type"),
                  request.method == "POST" ? "application/octet-stream" : "(none)");
    } else {
        EXPECT_EQ(object(QString::fromStdString(request.body)), json(body.toUtf8()));
        EXPECT_EQ(request.header("Content-Type"), "application/json");
    }
}

void answer(FakeServer& server, const std::string& line, const QJsonObject& reply,
            int status = 200) {
    const size_t blank = line.find(' ');
    server.onJson(line.substr(0, blank), line.substr(blank + 1), reply, status);
}

/// A server and a sandbox of a row's own.
struct Place {
    Place() { box.writeConfig({{"server", server.url() + '/'}, {"token", "t"}}); }

    /// Both modes, each with the same requests.
    void expectSuccess(const QStringList& words, const QString& said, const QJsonObject& reply,
                       const std::vector<std::string>& requests) const {
        expectOutcome(box.run(words), 0,
                      QString(said).replace("\\n", "\n").replace("SERVER", server.url()));
        const Outcome asJson = box.run(words + QStringList("--json"));
        EXPECT_EQ(asJson.code, 0);
        EXPECT_EQ(asJson.json(), reply);
        std::vector<std::string> twice = requests;
        twice.insert(twice.end(), requests.begin(), requests.end());
        EXPECT_EQ(server.lines(), twice);
    }

    FakeServer server;
    Sandbox box;
};

void checkOneRequest(const QStringList& cells) {
    Place place;
    const QStringList words = args(cells[0]);
    const std::string line = cells[1].toStdString();
    const QJsonObject reply = json(cells[3].toUtf8());
    answer(place.server, line, reply);
    place.expectSuccess(words, cells[5], reply, {line});
    checkWire(place.server.requests().at(0), cells[2]);
    checkWire(place.server.requests().at(1), cells[2]);
    answer(place.server, line, {{"error", "not you"}}, 403);
    expectError(place.box, words, 2, cells[4] + " failed (HTTP 403): not you");
    expectError(Sandbox(), words, 1,
                "'server' is not configured (quorvelle config set server <value>)");
}

}  // namespace

void checkOneRequestCommands(const QString& table) {
    for (const QStringList& cells : rows(table)) {
        SCOPED_TRACE(cells.first().toStdString());
        ASSERT_EQ(cells.size(), 6);
        checkOneRequest(cells);
    }
}

void checkChangeCommands(const std::string& read, const std::string& write, const QString& table) {
    for (const QStringList& cells : rows(table)) {
        SCOPED_TRACE(cells.join(u'|').toStdString());
        ASSERT_EQ(cells.size(), 4);
        Place place;
        answer(place.server, read, json(cells[1].toUtf8()));
        answer(place.server, write, {{"saved", 1}});
        place.expectSuccess(typed(cells[0]), cells[3] + '\n', {{"saved", 1}}, {read, write});
        checkWire(place.server.requests().at(0), {});
        checkWire(place.server.requests().at(1), cells[2]);
    }
}

}  // namespace quorvelle::testing
