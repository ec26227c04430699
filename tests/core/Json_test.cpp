#include "tela/core/Json.h"

#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <climits>

TEST(JsonParse, ElementsReadNestedValuesAndFallBackWhenMissingOrOfAnotherKind)
{
    const JSON::ParseResult result =
        JSON::parse(R"({"title": true, "width": 1919.9, "x": -5, "big": 1e300, "huge": 18446744073709551615,
                        "name": "caf\u00e9", "list": [1, "two", {"three": 3}]})");
    ASSERT_TRUE(result.ok()) << result.error.c_str();
    const JSON::Element root = result.root();
    EXPECT_TRUE(root["title"].getBool(false));
    EXPECT_EQ(root["width"].getInt(-1), 1919);
    EXPECT_EQ(root["x"].getInt(), -5);
    EXPECT_EQ(root["big"].getInt(), INT_MAX);
    EXPECT_EQ(root["huge"].getInt(), INT_MAX);
    EXPECT_EQ(root["name"].getString(), String("caf\xc3\xa9"));
    EXPECT_EQ(root["list"].size(), 3u);
    EXPECT_EQ(root["list"][2]["three"].getInt(), 3);

    // Every step past something missing stays missing, and getters give their fallback.
    EXPECT_EQ(root["height"].getInt(-1), -1);
    EXPECT_FALSE(root["list"][7]["three"].exists());
    EXPECT_EQ(root["missing"]["deeper"].getDouble(2.5), 2.5);
    EXPECT_TRUE(root["x"].getBool(true));          // a number is not a bool
    EXPECT_EQ(root["title"].getInt(9), 9);         // nor a bool a number
    EXPECT_EQ(root["list"]["name"].size(), 0u);    // arrays have no members
    EXPECT_EQ(root[nullptr].getString(String("d")), String("d"));
}

TEST(JsonParse, BadTextGivesAMessageAndNoDocumentWithoutThrowing)
{
    for (const char* text : {"", "{", "{\"a\": 1,, }", "[1, 2] trailing", "{\"a\": tru}", "\"\\uZZZZ\"", "01"}) {
        SCOPED_TRACE(text);
        const JSON::ParseResult result = JSON::parse(text);
        EXPECT_FALSE(result.ok());
        EXPECT_FALSE(result.error.empty());
        EXPECT_TRUE(result.value.is_discarded());
        EXPECT_FALSE(result.root().exists());
        EXPECT_EQ(result.root()["a"].getInt(4), 4);
    }
}

TEST(JsonParse, MessagesSayWhatAndWhereButNeverQuoteTheText)
{
    for (const char* text : {"{\"key\": \"secret words, never closed", "{\"key\": secret}", "[1, 2, \"secret\u0001\"]"}) {
        SCOPED_TRACE(text);
        const JSON::ParseResult result = JSON::parse(text);
        ASSERT_FALSE(result.ok());
        EXPECT_EQ(result.error.view().find("secret"), std::string_view::npos) << result.error.c_str();
        EXPECT_EQ(result.error.view().find("json.exception"), std::string_view::npos) << result.error.c_str();
        EXPECT_NE(result.error.view().find("line 1, column"), std::string_view::npos) << result.error.c_str();
    }
}

TEST(JsonParse, NestingIsBoundedSoDeepDocumentsAreRefusedWhole)
{
    const auto nested = [](std::size_t depth, char open, char close) {
        return std::string(depth, open) + std::string(depth, close);
    };
    EXPECT_TRUE(JSON::parse(nested(JSON::MAX_DEPTH, '[', ']')).ok());
    for (const std::size_t depth : {JSON::MAX_DEPTH + 1, std::size_t{100000}}) {
        const JSON::ParseResult result = JSON::parse(nested(depth, '[', ']'));
        EXPECT_FALSE(result.ok()) << depth;
        EXPECT_TRUE(result.value.is_discarded());
        EXPECT_NE(result.error.view().find("nested deeper than"), std::string_view::npos) << result.error.c_str();
    }
    std::string objects;
    for (std::size_t level = 0; level <= JSON::MAX_DEPTH; ++level)
        objects += "{\"a\":";
    objects += "1" + std::string(JSON::MAX_DEPTH + 1, '}');
    EXPECT_FALSE(JSON::parse(objects).ok());
    EXPECT_TRUE(JSON::parse(objects, JSON::MAX_DEPTH + 1).ok()); // a caller may allow more
}

TEST(JsonParse, DocumentsLiveInTheSeamAndReturnEveryBlock)
{
    const auto before = live_blocks();
    {
        const JSON::ParseResult result = JSON::parse(R"({"a long member name": ["a long string value, no SSO"]})");
        EXPECT_GT(live_blocks(), before);
    }
    EXPECT_EQ(live_blocks(), before);
}

TEST(JsonBuilder, WritesThePlacementFormWithTwoSpaceIndent)
{
    JSON::Builder builder(2);
    builder.startChild(nullptr);
    builder.add("title", true);
    builder.add("maximised", false);
    builder.add("x", 10);
    builder.add("width", 1024);
    builder.endChild();
    EXPECT_TRUE(builder.isComplete());
    EXPECT_EQ(builder.getOutput(),
              String("{\n  \"maximised\": false,\n  \"title\": true,\n  \"width\": 1024,\n  \"x\": 10\n}"));
}

TEST(JsonBuilder, MisuseIsReportedAndTheDocumentCarriesOn)
{
    ReportCapture reports;
    JSON::Builder builder;
    builder.add("early", 1);
    builder.startChild(nullptr);
    builder.add(nullptr, 2);
    builder.startArray(nullptr);
    builder.add("bad", std::numeric_limits<double>::quiet_NaN());
    builder.add("kept", 3);
    builder.endChild();
    builder.endChild();
    EXPECT_EQ(reports.text(), "JSON::Builder::add: no child is open\n"
                              "JSON::Builder::add: a member needs a name\n"
                              "JSON::Builder::startArray: a member needs a name\n"
                              "JSON::Builder::add: bad is not a finite number\n"
                              "JSON::Builder::endChild: no child is open\n");
    // The array was refused, so "kept" went into the object; the last endChild
    // closed the object and the extra one was the misuse.
    EXPECT_EQ(builder.getOutput(), String("{\"kept\":3}"));
    reports.clear();
    builder.startChild("again");
    EXPECT_EQ(reports.text(), "JSON::Builder::startChild: the document is already complete\n");
}

TEST(JsonBuilder, NestedDocumentsWithAwkwardTextParseBackToWhatWasBuilt)
{
    for (const int indent : {-1, 2}) {
        JSON::Builder builder(indent);
        builder.startChild(nullptr);
        builder.add("quote\"back\\slash\nline\x01", String("\xc3\xa9\xe2\x82\xac \""));
        builder.startArray("list");
        builder.add(nullptr, INT_MIN);
        builder.add(nullptr, std::ldexp(0.7, -60));
        builder.startChild(nullptr);
        builder.add("deep", false);
        builder.endChild();
        builder.endChild();
        builder.endChild();
        ASSERT_TRUE(builder.isComplete());
        const JSON::ParseResult parsed = JSON::parse(builder.getOutput().view());
        ASSERT_TRUE(parsed.ok()) << parsed.error.c_str();
        const JSON::Element root = parsed.root();
        EXPECT_EQ(root["quote\"back\\slash\nline\x01"].getString(), String("\xc3\xa9\xe2\x82\xac \""));
        EXPECT_EQ(root["list"][std::size_t{0}].getInt(), INT_MIN);
        EXPECT_EQ(root["list"][1].getDouble(), std::ldexp(0.7, -60));
        EXPECT_TRUE(root["list"][2]["deep"].isBool());
    }
}
