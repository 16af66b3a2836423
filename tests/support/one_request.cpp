#include "support/one_request.h"

#include <gmock/gmock.h>

#include <QJsonDocument>

#include "support/notation.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

/// One row of the table against a server and a sandbox of its own.
class Row {
public:
    explicit Row(const QStringList& cells)
        : words(args(cells.at(0))),
          line(cells.at(1).toStdString()),
          body(cells.at(2)),
          reply(json(cells.at(3).toUtf8())),
          label(cells.at(4)),
          text(QString(cells.at(5)).replace("\\n", "\n").replace("SERVER", server.url())) {
        box.writeConfig({{"schema_version", 2}, {"server", server.url() + '/'}, {"token", "t"}});
    }

    void check() {
        answer(reply, 200);
        expectOutcome(box.run(words), 0, text);
        const Outcome asJson = box.run(words + QStringList("--json"));
        EXPECT_EQ(asJson.code, 0);
        EXPECT_EQ(asJson.json(), reply);
        EXPECT_THAT(server.lines(), ::testing::ElementsAre(line, line));
        for (const SeenRequest& request : server.requests()) {
            checkWire(request);
        }
        answer({{"error", "not you"}}, 403);
        expectError(box, words, 2, label + " failed (HTTP 403): not you");
        expectError(Sandbox(), words, 1,
                    "'server' is not configured (quorvelle config set server <value>)");
    }

private:
    void answer(const QJsonObject& object, int status) {
        const size_t blank = line.find(' ');
        server.onJson(line.substr(0, blank), line.substr(blank + 1), object, status);
    }

    void checkWire(const SeenRequest& request) const {
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

    FakeServer server;
    Sandbox box;
    QStringList words;
    std::string line;
    QString body;
    QJsonObject reply;
    QString label;
    QString text;
};

}  // namespace

void checkOneRequestCommands(const QString& table) {
    for (const QStringList& cells : rows(table)) {
        SCOPED_TRACE(cells.first().toStdString());
        ASSERT_EQ(cells.size(), 6);
        Row(cells).check();
    }
}

void checkUsageLines(const QString& lines) {
    const FakeServer server;
    const Sandbox box;
    box.writeConfig({{"schema_version", 2}, {"server", server.url()}});
    for (const QStringList& row : rows(lines)) {
        for (const QString& line : row) {
            SCOPED_TRACE(line.toStdString());
            expectUsage(box, args(line));
        }
    }
    EXPECT_THAT(server.lines(), ::testing::ElementsAre());
}

}  // namespace quorvelle::testing
