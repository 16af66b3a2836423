#include <gtest/gtest.h>

#include "support/one_request.h"

namespace quorvelle::testing {
namespace {

TEST(ChannelCommands, MakeOneRequestEach) {
    checkOneRequestCommands(R"(
channels | GET /api/channels | | {'channels':[]} | channels | No channels on SERVER\n
channels surplus | GET /api/channels | | {'channels':'none'} | channels | No channels on SERVER\n
channels | GET /api/channels | | {'channels':[{'channel':'größe'},{'channel':'b','build':''},{'channel':'c','build':'7','promoted_at':'2026-01-02'},{'channel':'d','build':'8','file_count':0,'total_size':9007199254740993,'promoted_at':'2026-01-03'},{'build':7}]} | channels | Channels on SERVER:\n  größe (no build yet)\n  b (no build yet)\n  c -> build 7  promoted 2026-01-02\n  d -> build 8  (0 files, 9007199254740993 bytes)  promoted 2026-01-03\n   (no build yet)\n
channel create a/b | POST /api/channels/a%2Fb | | {'x':1} | channel create | Created channel 'a/b' on SERVER\n
channel delete a#b | DELETE /api/channels/a%23b | | {'unassigned_from_groups':3} | channel delete | Channel 'a#b' deleted (unassigned from 3 group(s); builds retained)\n
channel delete a | DELETE /api/channels/a | | {'unassigned_from_groups':'3'} | channel delete | Channel 'a' deleted (unassigned from 0 group(s); builds retained)\n
channel public a true | POST /api/channels/a/public?value=true | | {} | channel public | Channel 'a' is now public (anonymous read)\n
channel public a false | POST /api/channels/a/public?value=false | | {} | channel public | Channel 'a' is now private\n
)");
}

TEST(ChannelCommands, PrintTheUsageForAWrongCountOrValue) {
    checkUsageLines(R"(
channel create | channel create a b | channel delete | channel delete a b | channel public a
channel public a true b | channel public a yes | channel public a True)");
}

}  // namespace
}  // namespace quorvelle::testing
