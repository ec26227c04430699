#include "core/Json.h"

#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

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

namespace {

// Fills a Builder and a directly built value with the same random document:
// nested objects and arrays of booleans, integers, reals and awkward strings.
class RandomDocument {
public:
    explicit RandomDocument(unsigned seed) : m_random(seed) {}

    // Fills the container the builder has open; `model` is that container.
    void fill(JSON::Builder& builder, JSON::Value& model, int depth)
    {
        for (int i = pick(0, 5); i > 0; --i) {
            // Member names carry their index, so no two in one object are equal.
            const std::string name = "m" + std::to_string(i) + text();
            const char* builder_name = model.is_object() ? name.c_str() : nullptr;
            JSON::Value& slot = model.is_object() ? model[JSON::Text(name.c_str())] : (model.push_back(JSON::Value()), model.back());
            const int kind = depth < 3 ? pick(0, 5) : pick(2, 5);
            if (kind < 2) {
                kind == 0 ? builder.startChild(builder_name) : builder.startArray(builder_name);
                slot = kind == 0 ? JSON::Value::object() : JSON::Value::array();
                fill(builder, slot, depth + 1);
                builder.endChild();
            } else if (kind == 2) {
                const bool value = pick(0, 1) == 1;
                builder.add(builder_name, value);
                slot = value;
            } else if (kind == 3) {
                const int value = pick(INT_MIN, INT_MAX);
                builder.add(builder_name, value);
                slot = static_cast<std::int64_t>(value);
            } else if (kind == 4) {
                const double value = std::ldexp(std::uniform_real_distribution<double>(-1, 1)(m_random), pick(-60, 60));
                builder.add(builder_name, value);
                slot = value;
            } else {
                const std::string value = text();
                builder.add(builder_name, String(value.c_str()));
                slot = JSON::Text(value.c_str());
            }
        }
    }

private:
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    std::string text()
    {
        static const char* const pieces[] = {"", "a", "\"", "\\", "\n", "\x01", "\xc3\xa9", "\xe2\x82\xac", " "};
        std::string result;
        for (int i = pick(0, 4); i > 0; --i)
            result += pieces[pick(0, 8)];
        return result;
    }

    std::mt19937 m_random;
};

} // namespace

TEST(JsonBuilder, RandomDocumentsParseBackToWhatWasBuilt)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        RandomDocument random(seed);
        JSON::Builder builder(seed % 2 ? 2 : -1);
        JSON::Value model = JSON::Value::object();
        builder.startChild(nullptr);
        random.fill(builder, model, 0);
        builder.endChild();
        ASSERT_TRUE(builder.isComplete());
        const String output = builder.getOutput();
        const JSON::ParseResult parsed = JSON::parse(output.view());
        ASSERT_TRUE(parsed.ok()) << parsed.error.c_str() << "\n" << output.c_str();
        EXPECT_EQ(parsed.value, model) << output.c_str();
    }
}
