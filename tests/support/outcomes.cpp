#include "support/outcomes.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include "support/qt_printers.h"

namespace quorvelle::testing {

QJsonObject object(const QString& text) {
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    EXPECT_TRUE(document.isObject()) << "no JSON object: " << text.toStdString();
    return document.object();
}

void expectOutcome(const Outcome& got, int code, const QString& out, const QString& err) {
    EXPECT_EQ(got.code, code);
    EXPECT_EQ(got.out, out);
    EXPECT_EQ(got.err, err);
}

void expectError(const Sandbox& sandbox, const QStringList& words, int code,
                 const QString& message) {
    expectOutcome(sandbox.run(words), code, {}, message + u'\n');
    const Outcome json = sandbox.run(QStringList("--json") + words);
    EXPECT_EQ(json.code, code);
    EXPECT_EQ(json.json(), (QJsonObject{{"error", message}}));
    EXPECT_EQ(json.err, QString());
}

void expectUsage(const Sandbox& sandbox, const QStringList& words) {
    const QString usage = sandbox.run({}).out;
    EXPECT_TRUE(usage.startsWith("Quorvelle CLI "));
    expectOutcome(sandbox.run(words), 1, usage);
    expectOutcome(sandbox.run(QStringList("--json") + words), 1, usage);
}

}  // namespace quorvelle::testing
