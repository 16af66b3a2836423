#include <gmock/gmock.h>

#include <QRegularExpression>

#include "support/process_runner.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(Version, IsPrintedByBothWordsInBothModes) {
    const Sandbox sandbox;
    const Outcome text = sandbox.run({QStringLiteral("version")});
    EXPECT_EQ(text.code, 0);
    EXPECT_EQ(text.err, QString());
    const QRegularExpression version("\\A0\\.7\\.10\\+g([0-9a-f]+|unknown)\n\\z");
    EXPECT_TRUE(version.match(text.out).hasMatch()) << text.out.toStdString();
    EXPECT_EQ(sandbox.run({QStringLiteral("--version")}).out, text.out);
    const Outcome json = sandbox.run({QStringLiteral("--version"), QStringLiteral("--json")});
    EXPECT_EQ(json.json().value(u"version").toString() + u'\n', text.out);
}

}  // namespace quorvelle::testing
