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

TEST(BuildCommands, MakeOneRequestEach) {
    checkOneRequestCommands(R"(
builds | GET /api/builds | | {'builds':[]} | builds | No builds on SERVER\n
builds surplus | GET /api/builds | | {} | builds | No builds on SERVER\n
builds | GET /api/builds | | {'builds':[{'build':'b1','created_at':'2026-01-02','file_count':3,'total_size':5000000001,'disabled':true,'channels':['a','b']},{'build':'b2','created_at':'2026-01-03','file_count':1,'total_size':7,'channels':[]}]} | builds | Builds on SERVER:\n  b1  2026-01-02  3 files  5000000001 bytes  [DISABLED]  <- a, b\n  b2  2026-01-03  1 files  7 bytes\n
build 42 | GET /api/builds/42 | | {'created_at':'2026-01-02','file_count':1,'total_size':9007199254740993,'disabled':true,'channels':['a'],'files':[{'path':'bin/ü','size':9007199254740993}]} | build | Build 42  [DISABLED]  created 2026-01-02  1 files, 9007199254740993 bytes\non channels: a\nfiles:\n  bin/ü  (9007199254740993 bytes)\n
build a/b | GET /api/builds/a%2Fb | | {} | build | Build a/b  created   0 files, 0 bytes\non channels: (none)\nfiles:\n
build delete 7#1 | DELETE /api/builds/7%231 | | {'x':1} | build delete | Build '7#1' deleted\n
build disable 7 | POST /api/builds/7/disabled?value=true | | {} | build disable | Build '7' disabled (cannot be promoted)\n
build enable 7 | POST /api/builds/7/disabled?value=false | | {} | build enable | Build '7' enabled\n
)");
}

}  // namespace
}  // namespace quorvelle::testing
