// Plays scrolling.txt, whose rows were worked out by hand.
#include "views/scrolling.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

using Move = ScrollResult (*)(ScrollState& state, uint32_t argument);

const std::map<std::string, Move> kMoves = {
    {"PageDown", [](ScrollState& state, uint32_t) { return PageDown(state); }},
    {"PageUp", [](ScrollState& state, uint32_t) { return PageUp(state); }},
    {"LineDown", [](ScrollState& state, uint32_t) { return LineDown(state); }},
    {"LineUp", [](ScrollState& state, uint32_t) { return LineUp(state); }},
    {"CursorDown", [](ScrollState& state, uint32_t byLine) { return CursorDown(state, byLine != 0); }},
    {"CursorUp", [](ScrollState& state, uint32_t byLine) { return CursorUp(state, byLine != 0); }},
    {"ThumbTo", ThumbTo},
    {"GoToEnd",
     [](ScrollState& state, uint32_t last) {
         GoToEnd(state, last ? 1 : -1);
         return ScrollResult::kMoved;
     }},
    {"MoveTo",
     [](ScrollState& state, uint32_t row) {
         return MoveTo(state, row) ? ScrollResult::kMoved : ScrollResult::kNothing;
     }},
};
const std::map<std::string, ScrollKind> kKinds = {
    {"list", ScrollKind::kList}, {"text", ScrollKind::kText}, {"going-on", ScrollKind::kTextGoingOn}};
const std::map<std::string, ScrollResult> kResults = {
    {"nothing", ScrollResult::kNothing}, {"moved", ScrollResult::kMoved}, {"end", ScrollResult::kAtEnd}};

TEST(Scrolling, MovesAsWorkedOutByHand) {
    std::ifstream table(PELNOR_SCROLLING);
    int rows = 0;
    for (std::string line; std::getline(table, line);) {
        SCOPED_TRACE(line);
        std::istringstream words(line);
        std::string kind, move, result;
        ScrollState state;
        uint32_t argument = 0, top = 0, cursor = 0;
        int maximum = 0;
        words >> kind;
        if (kind == "#") continue;
        words >> state.page >> state.total >> maximum >> state.top >> state.cursor >> move >> argument >>
            result >> top >> cursor;
        ASSERT_TRUE(words && kMoves.count(move) && kResults.count(result) && kKinds.count(kind));
        state.kind = kKinds.at(kind);
        EXPECT_EQ(ScrollMaximum(state), maximum);
        EXPECT_EQ(kMoves.at(move)(state, argument), kResults.at(result));
        EXPECT_EQ(state.top, top);
        EXPECT_EQ(state.cursor, cursor);
        ++rows;
    }
    EXPECT_GT(rows, 40);
}

}  // namespace
