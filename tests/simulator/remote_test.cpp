#include "simulator/remote.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

TEST(Remote, KeepsToItsRulesAndStartsAgainAfterARefusal) {
    struct Conversation {
        const char* behaviour;
        const char* script;
        std::string_view scenario = R"({"remote": {"memory": {"256": [193, 194, 195], "65535": [1, 3]}}})";
    };
    const std::vector<Conversation> conversations = {
        {"tells of itself", "165 = 0 165; 0 = 0 0; 4 = 0 4 3; 5 = 0 5 0 1 0 17 0 33; 6 = 0 6 196"},
        {"is what the scenario says", "165 = 0 165; 6 = 0 6 7; 4 = 0 4 0; 5 = 0 5; 8 = 0 8; 5 = 0 5 255",
         R"({"remote": {"version": 7, "sections": [], "free": 255, "arrivesAtPoll": 1}})"},
        {"writes, verifies and reads a block",
         "1 = 0 1; 1 0 6; 1 52 2 52 3 52 x4 = 0 78; 2 = 0 2; 1 0 0 2 = 0 88;"
         "8 = 0 8; 1 = 0 1; 1 0 8 = 0 1 2 3 255 255 255 255 255"},
        {"wraps at the end of the memory",
         "1 = 0 1; 255 255 4; 10 52 11 52 x4 = 0 122; 8 = 0 8; 1 = 0 1; 255 255 3 /8 = 0 10 11 255;"
         "2 = 0 2; 255 255 0 1 = 0 127"},
        {"clears the free bits of sections alone, for a value with bit 7",
         "7 = 0 7; 24 = 0 24 0; 8 = 0 8; 5 = 0 5 255; 7 = 0 7; 165 = 0 165 0; 8 = 0 8; 5 = 0 5 223",
         R"({"remote": {"free": 255}})"},
        {"reads as many words as the frame says, without echo",
         "8 = 0 8; 1 = 0 1; 1 0 2 /8 = 0 193 194; 8 = 0 8; 1 = 0 1; 1 0 0 /8 = 0; 165 = 0 165"},
        {"comes with the poll that it answers",
         "6 = 1 0 0; 165 = 1 0; 165 165 = 1 0; 165; 6 = 1 0 0; 165 = 0 165; 6 = 0 6 196",
         R"({"remote": {"arrivesAtPoll": 3}})"},
        {"refuses everything, if it is absent", "165 = 1 0; 0 /63 = 1; 1 /0", R"({"remote": null})"},
        {"refuses unknown commands", "3 = 1 0; /1 = 1; 6 6 = 1 0 0; 3; 8 = 0 8; 6 = 1 0 0; 6 = 0 6 196"},
        {"refuses a command for a header or a range", "1 = 0 1; 2 = 1 0; 2 = 0 2; 1 0 0 = 1 0; 165 = 0 165"},
        {"refuses data of another size than announced, which are not stored",
         "1 = 0 1; 1 0 6; 1 52 2 52 x4 = 1 0; 1 52 2 52 3 52 x4 = 1 0; 2 = 0 2; 1 0 0 0 = 0 9"},
        {"refuses data at the commands' LinkFactor",
         "1 = 0 1; 1 0 2; 1 52 = 1 0; 1 52 x4 = 1 0; 165 = 0 165"},
        {"refuses commands at other LinkFactors",
         "165 x0 = 1 0; 165 x2 = 1 0; 165 x257 = 1 0; 8 = 0 8; 5 x4 = 1 0 0; 5 /1 = 0 5"},
        {"hears twice the LinkFactor behind the second kind",
         "165 x1 = 1 0; 165 x3 = 1 0; 1 x2 = 0 1; 1 0 2 x2; 1 52 x8 = 0 195",
         R"({"interfaces": [{"vendorId": 11025}]})"},
    };
    for (const Conversation& each : conversations) {
        SCOPED_TRACE(each.behaviour);
        Wire(each.scenario).Play(each.script);
    }
}

}  // namespace
}  // namespace vento::simulator
