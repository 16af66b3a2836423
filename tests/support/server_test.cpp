#include "support/server_test.h"

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

/// One row of the table against a server and a sandbox of its own.
void checkRow(const QStringList& cells) {
    FakeServer server;
    const Sandbox box;
    box.writeConfig({{"server", server.url() + '/'}, {"token", "t"}});
    const QStringList words = args(cells[0]);
    const std::string line = cells[1].toStdString();
    const QJsonObject reply = json(cells[3].toUtf8());
    const auto answer = [&](const QJsonObject& object, int status) {
        const size_t blank = line.find(' ');
        server.onJson(line.substr(0, blank), line.substr(blank + 1), object, status);
    };
    answer(reply, 200);
    expectOutcome(box.run(words), 0,
                  QString(cells[5]).replace("\\n", "\n").replace("SERVER", server.url()));
    const Outcome asJson = box.run(words + QStringList("--json"));
    EXPECT_EQ(asJson.code, 0);
    EXPECT_EQ(asJson.json(), reply);
    EXPECT_THAT(server.lines(), ElementsAre(line, line));
    checkWire(server.requests().at(0), cells[2]);
    checkWire(server.requests().at(1), cells[2]);
    answer({{"error", "not you"}}, 403);
    expectError(box, words, 2, cells[4] + " failed (HTTP 403): not you");
    expectError(Sandbox(), words, 1,
                "'server' is not configured (quorvelle config set server <value>)");
}

}  // namespace

void checkOneRequestCommands(const QString& table) {
    for (const QStringList& cells : rows(table)) {
        SCOPED_TRACE(cells.first().toStdString());
        ASSERT_EQ(cells.size(), 6);
        checkRow(cells);
    }
}

}  // namespace quorvelle::testing
