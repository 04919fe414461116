#include "core/CompositeCoordinates.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>

using namespace vexa;
using testing_support::LogCapture;

namespace {

const char* const kCompositeMessage =
    "Composite must have two parameters (percents and pixels) separated by a \",\"";
const char* const kPositionMessage = "Position must contain two composites (x and y) separated by a \";\"";
const char* const kSizeMessage = "Size must contain two composites (width and height) separated by a \";\"";

} // namespace

TEST(CompositeCoordinates, ParsesRelativeThenPixelParts)
{
    const auto position = StringToCompositePosition("0.5,0;0,0");
    EXPECT_EQ(position.x, (CompositeFloat{0.5f, 0.0f}));
    EXPECT_EQ(position.y, (CompositeFloat{0.0f, 0.0f}));

    // Pieces are trimmed after splitting, so blanks around numbers and separators are fine.
    const auto spaced = StringToCompositeSize(" \t0.25 , 10 ;\n1\v,\f-20\r ");
    EXPECT_EQ(spaced.width, (CompositeFloat{0.25f, 10.0f}));
    EXPECT_EQ(spaced.height, (CompositeFloat{1.0f, -20.0f}));

    // Empty pieces vanish: doubled separators and separators at either end.
    EXPECT_EQ(StringToCompositeFloat(",0.5,10,"), (CompositeFloat{0.5f, 10.0f}));
    EXPECT_EQ(StringToCompositePosition(";;1,2;;3,4;").y, (CompositeFloat{3.0f, 4.0f}));

    // Like stof, text after a number is ignored.
    EXPECT_EQ(StringToCompositeFloat("1px,0"), (CompositeFloat{1.0f, 0.0f}));
}

TEST(CompositeCoordinates, WrongPartCountIsLoggedOnceByInnermostParser)
{
    const std::string composite = "vexa::StringToCompositeFloat";
    const struct {
        std::function<void()> parse;
        std::string message;
        std::string label;
    } cases[] = {
        {[] { StringToCompositeFloat("0.5"); }, kCompositeMessage, composite},
        {[] { StringToCompositePosition("0,0;0,0;0,0"); }, kPositionMessage,
         "vexa::StringToCompositePosition"},
        {[] { StringToCompositeSize("1,0;1,0;1,0"); }, kSizeMessage, "vexa::StringToCompositeSize"},
        // Two composites, but the second is a lone number: only the composite parser reports it.
        {[] { StringToCompositeSize("1,0;1"); }, kCompositeMessage, composite},
    };
    for (const auto& c : cases) {
        LogCapture log;
        EXPECT_THROW(c.parse(), std::exception) << c.message;
        ASSERT_EQ(log.messages.size(), 1u) << c.message;
        EXPECT_EQ(log.messages[0].level, rlog::Level::Failure);
        EXPECT_EQ(std::tie(log.messages[0].message, log.messages[0].label), std::tie(c.message, c.label));
    }
}

TEST(CompositeCoordinates, NumberErrorsPropagateUnlogged)
{
    LogCapture log;
    EXPECT_THROW(StringToCompositeFloat("abc,0"), std::invalid_argument);
    EXPECT_THROW(StringToCompositeFloat("0, \t"), std::invalid_argument);
    EXPECT_THROW(StringToCompositeSize("1e99,0;1,0"), std::out_of_range);
    EXPECT_TRUE(log.messages.empty());
}
