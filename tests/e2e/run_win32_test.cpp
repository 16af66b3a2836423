#include "support/fake_server.h"
#include "support/process_runner.h"

namespace quorvelle::testing {
namespace {

/// The batch file hands its arguments on to a program that stores the last one.
TEST(RunOnWindows, HandsWholeArgumentsToABatchFileAndWhatItStarts) {
    FakeServer server;
    const Sandbox box;
    const QString program =
        QDir::toNativeSeparators(QFileInfo(quorvelleProgram()).absoluteFilePath());
    box.write("my app/my tool.bat",
              "@\"" + program.toUtf8() + "\" config set token %*\r\n@exit /b 3\r\n");
    server.onJson("GET", "/api/channels/c",
                  json("{'launch_targets':[{'label':'T','exe':'my tool.bat'}]}"));
    box.follow(server.url(), "c", "my app");
    for (const char* argument :
         {"plain", "a b", "c&d", "<|>^", R"(")", R"(C:\a b\)", R"(a\\"b\")", "größe=日本"}) {
        SCOPED_TRACE(argument);
        const Outcome got = box.run({"run", "--wait", "app", "--", argument});
        EXPECT_EQ(got.code, 3) << got.err.toStdString();
        EXPECT_EQ(box.config()["token"].toString(), QString(argument));
    }
}

}  // namespace
}  // namespace quorvelle::testing
