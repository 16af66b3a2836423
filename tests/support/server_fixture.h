#pragma once

#include "support/fake_server.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

/// A server, and a place for runs of the program, which does not know of it yet.
struct ProgramTest : ::testing::Test {
    FakeServer server;
    Sandbox box;
};

/// The same where a configuration names the server, with the token "t".
struct ServerTest : ProgramTest {
    ServerTest() { box.writeConfig({{"server", server.url()}, {"token", "t"}}); }
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

/// Runs those that ask for something with the request `read` and send it back with one change by
/// `write`, and checks both requests, the text, and the reply as JSON. A row's cells:
///
///     words, "~" for a blank | what is read | the body written | text
void checkChangeCommands(const std::string& read, const std::string& write, const QString& table);

}  // namespace quorvelle::testing
