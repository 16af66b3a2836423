#pragma once

#include <gtest/gtest.h>

#include <QString>

#include "support/fake_server.h"
#include "support/outcomes.h"

namespace quorvelle::testing {

/// A server that a configuration names, with the token "t".
struct ServerTest : ::testing::Test {
    ServerTest() {
        box.writeConfig({{"schema_version", 2}, {"server", server.url()}, {"token", "t"}});
    }

    FakeServer server;
    Sandbox box;
};

/// Runs the commands of a table that make one request each, with the real program, and
/// checks of each: the request as sent, the text, the reply as JSON, a refusal by the
/// server and a run without a configured server. A row's cells:
///
///     words | METHOD target | body sent, in the notation of json(), or empty
///           | the server's reply, in that notation | label of a failure | text
///
/// In the text "\n" ends a line and SERVER stands for the server's URL.
void checkOneRequestCommands(const QString& table);

}  // namespace quorvelle::testing
