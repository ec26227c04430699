// Tool tip contents as values: which lines are added, when resources are
// looked up, and what takes part in comparisons.

#include "tela/core/Resources.h"
#include "tela/text/TooltipDetails.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

class Tooltips : public ::testing::Test {
protected:
    void SetUp() override
    {
        setResourceString(100, WString(u"Save"));
        setResourceString(101, WString(u"Open\nthe file chooser"));
    }
    void TearDown() override { clearResourceStrings(); }
};

} // namespace

TEST_F(Tooltips, LinesNeedSomethingToShow)
{
    TooltipDetails details;
    EXPECT_TRUE(details.empty());
    details.addLine(UIString(), UIString(), String());
    details.addLine(UIString(555), String());   // a resource with no text is nothing to show
    EXPECT_TRUE(details.lines.empty());
    EXPECT_TRUE(details.empty());

    details.addLine(UIString(), String("Ctrl+S"));
    ASSERT_EQ(details.lines.size(), 1u);
    EXPECT_TRUE(details.lines[0].text.text.empty());
    EXPECT_TRUE(details.lines[0].label.text.empty());

    TooltipDetails extra;
    extra.extraText = WString(u"more");
    EXPECT_FALSE(extra.empty());
}

TEST_F(Tooltips, TextsAreLookedUpOnceAndOnlyTheLabelKeepsItsResource)
{
    UIString ellipsis(100, 0, UIString::APPEND_ELLIPSIS);
    resolveUIString(ellipsis);
    resolveUIString(ellipsis);
    EXPECT_EQ(ellipsis.text, WString(u"Save.."));
    EXPECT_EQ(resourceStrW(101, RESOURCE_FIRST_LINE), WString(u"Open"));

    const TooltipDetails details(UIString(101, RESOURCE_FIRST_LINE), UIString(100));
    ASSERT_EQ(details.lines.size(), 1u);
    const TooltipDetails::Line& line = details.lines[0];
    EXPECT_EQ(line.text.text, WString(u"Save"));
    EXPECT_EQ(line.text.resourceId, UIString::NO_RESOURCE);
    EXPECT_EQ(line.label.text, WString(u"Open"));
    EXPECT_EQ(line.label.resourceId, 101u);
}

TEST_F(Tooltips, ComparisonLooksAtTheLinesOnly)
{
    TooltipDetails by_number(ResId(100));
    TooltipDetails by_text(WString(u"Save"));
    by_text.title = UIString(WString(u"Title"));
    by_text.position = {5, 5};
    EXPECT_TRUE(by_number == by_text);

    // A line whose label is still a resource number compares by its text.
    TooltipDetails::Line pending(WString(u"x"));
    pending.label = UIString(100);
    TooltipDetails::Line literal(WString(u"x"));
    literal.label = UIString(WString(u"Save"));
    EXPECT_TRUE(pending == literal);
    EXPECT_EQ(pending.label.text, WString(u"Save"));   // and keeps what it looked up

    TooltipDetails keyed(WString(u"Save"));
    keyed.lines[0].key = String("S");
    EXPECT_TRUE(keyed != by_text);
    keyed.addLine(UIString(WString(u"second")), String());
    EXPECT_FALSE(keyed == by_text);

    TooltipDetails moved(std::move(keyed));
    EXPECT_EQ(moved.lines.size(), 2u);
    EXPECT_TRUE(keyed.lines.empty());   // NOLINT: the moved-from value is specified as empty
}
