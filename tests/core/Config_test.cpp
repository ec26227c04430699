#include "tela/core/QvApplication.h"
#include "tela/core/Config.h"
#include "tela/core/Json.h"
#include "tela/core/Preferences.h"
#include "tela/core/SettingsFile.h"

#include "support/ReportCapture.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

class ConfigTest : public ::testing::Test {
protected:
    void SetUp() override { Qv::reloadConfigurationFrom(directory.path().string()); }
    void TearDown() override { Qv::reloadConfigurationFrom(""); }

    void writeConfig(const std::string& text)
    {
        TemporaryDirectory::write(directory.file("config.json"), text);
        Qv::reloadConfigurationFrom(directory.path().string());
    }

    TemporaryDirectory directory;
};

} // namespace

TEST_F(ConfigTest, ValuesAreReadAndBoundsClampWithoutWrapping)
{
    writeConfig(R"({"eTimePerSec": 25.5, "big": 1e12, "small": -7, "text": "12", "half": 2.9, "neg": -2.9})");
    EXPECT_EQ(config_double("eTimePerSec", 18.2), 25.5);
    EXPECT_EQ(config_double("missing", 18.2), 18.2);
    EXPECT_EQ(config_int("big", 1), INT_MAX);
    EXPECT_EQ(config_int("small", 1, 0, 10), 0);
    EXPECT_EQ(config_int("small", 1, -100, -50), -50);
    EXPECT_EQ(config_int("text", 3), 3); // a string is not a number, even if it reads as one
    EXPECT_EQ(config_int("half", 0), 2);
    EXPECT_EQ(config_int("neg", 0), -2);
    EXPECT_EQ(config_int(nullptr, 4), 4);
    EXPECT_EQ(config_int("missing", 50, 0, 10), 50); // the caller's default is not clamped
    EXPECT_EQ(config_string("text", String("x")), String("12"));
    EXPECT_EQ(config_string("half", String("x")), String("x")); // a number is not text
    EXPECT_EQ(config_string(nullptr, String("x")), String("x"));
}

TEST_F(ConfigTest, BoundsTheWrongWayRoundAreReportedAndGiveTheDefault)
{
    writeConfig(R"({"a": 5})");
    ReportCapture reports;
    EXPECT_EQ(config_int("a", 7, 10, 0), 7);
    EXPECT_EQ(reports.text(), "config_int: bounds of a are the wrong way round\n");
    EXPECT_EQ(config_int("a", 7), 5); // and lookups carry on
}

TEST_F(ConfigTest, AMissingFileGivesDefaultsSilentlyAndAFileIsReadOnceUntilTheHookReloadsIt)
{
    {
        ReportCapture reports;
        EXPECT_EQ(config_double("eTimePerSec", 18.2), 18.2);
        EXPECT_TRUE(reports.text().empty());
    }
    writeConfig(R"({"a": 1})");
    EXPECT_EQ(config_int("a", 0), 1);
    TemporaryDirectory::write(directory.file("config.json"), R"({"a": 2})");
    EXPECT_EQ(config_int("a", 0), 1);
    Qv::reloadConfigurationFrom(directory.path().string());
    EXPECT_EQ(config_int("a", 0), 2);
}

TEST_F(ConfigTest, ACorruptFileIsReportedOnceAcrossThreadsAndKeptAside)
{
    writeConfig("{ \"a\": 1,, }");
    ReportCapture reports;
    std::vector<std::thread> threads;
    std::vector<int> seen(4, 0);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&seen, t] { seen[t] = config_int("a", 7); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(seen, std::vector<int>(4, 7));
    EXPECT_EQ(config_int("a", 7), 7);
    EXPECT_EQ(reports.count("is not a JSON object"), 1);
    EXPECT_EQ(reports.count("config.json.corrupt"), 1);
    EXPECT_FALSE(std::filesystem::exists(directory.file("config.json")));
    EXPECT_EQ(TemporaryDirectory::read(directory.file("config.json.corrupt")), "{ \"a\": 1,, }");

    // Later bad files never overwrite the first one kept aside: JSON that is
    // not an object of settings, and a document nested too deep.
    writeConfig("[1, 2]");
    EXPECT_EQ(config_int("a", 3), 3);
    const std::string deep = "{\"a\": " + std::string(JSON::MAX_DEPTH, '[') + std::string(JSON::MAX_DEPTH, ']') + "}";
    writeConfig(deep);
    EXPECT_EQ(config_int("a", 3), 3);
    EXPECT_EQ(reports.count("is not a JSON object"), 3);
    EXPECT_EQ(reports.count("nested deeper than"), 1) << reports.text();
    EXPECT_EQ(TemporaryDirectory::read(directory.file("config.json.corrupt")), "{ \"a\": 1,, }");
    EXPECT_EQ(TemporaryDirectory::read(directory.file("config.json.corrupt.1")), "[1, 2]");
    EXPECT_EQ(TemporaryDirectory::read(directory.file("config.json.corrupt.2")), deep);
}

namespace {

// Points XDG_CONFIG_HOME somewhere for one test, and puts back what was there.
class ConfigHome {
public:
    explicit ConfigHome(const std::string& path)
    {
        if (const char* previous = std::getenv("XDG_CONFIG_HOME"))
            m_previous = previous;
        ::setenv("XDG_CONFIG_HOME", path.c_str(), 1);
        Qv::reloadConfigurationFrom("");
    }
    ~ConfigHome()
    {
        Qv::setApplicationName(WString());
        if (m_previous.empty())
            ::unsetenv("XDG_CONFIG_HOME");
        else
            ::setenv("XDG_CONFIG_HOME", m_previous.c_str(), 1);
        Qv::reloadConfigurationFrom("");
    }
    ConfigHome(const ConfigHome&) = delete;
    ConfigHome& operator=(const ConfigHome&) = delete;

private:
    std::string m_previous;
};

} // namespace

TEST(ConfigDirectory, EachApplicationKeepsItsSettingsUnderItsOwnName)
{
    TemporaryDirectory home;
    const ConfigHome config_home(home.path().string());
    std::filesystem::create_directories(home.file("Viewer"));
    TemporaryDirectory::write(home.file("Viewer/config.json"), R"({"eTimePerSec": 30})");
    EXPECT_EQ(config_double("eTimePerSec", 18.2), 18.2); // read before any application is made

    {
        const unsigned generation = Qv::configurationGeneration();
        const Qv::Application viewer(WString(u"Viewer"), WString(u"1.0"));
        EXPECT_EQ(Qv::configurationDirectory().view(), home.file("Viewer"));
        EXPECT_EQ(toUTF8(viewer.getUserDataPath()).view(), home.file("Viewer"));
        EXPECT_NE(Qv::configurationGeneration(), generation); // values read once are read again
        EXPECT_EQ(config_double("eTimePerSec", 18.2), 30.0);
        EXPECT_TRUE(prefs().setPreference("Placement", String("viewer's")));
    }
    {
        const Qv::Application editor(WString(u"Editor"), WString(u"1.0"));
        EXPECT_EQ(config_double("eTimePerSec", 18.2), 18.2);
        EXPECT_EQ(prefs().getPreference("Placement").view(), "");
        EXPECT_TRUE(prefs().setPreference("Placement", String("editor's")));
    }
    EXPECT_NE(TemporaryDirectory::read(home.file("Viewer/preferences.json")).find("viewer's"), std::string::npos);
    EXPECT_NE(TemporaryDirectory::read(home.file("Editor/preferences.json")).find("editor's"), std::string::npos);

    // A name is one directory below the configuration home, whatever it holds.
    Qv::setApplicationName(WString(u"../../etc"));
    EXPECT_EQ(Qv::configurationDirectory().view(), home.file(".._.._etc"));
    Qv::setApplicationName(WString(u".."));
    EXPECT_EQ(Qv::configurationDirectory().view(), home.file("Tela"));
}

TEST_F(ConfigTest, RegistriesReadFlagsAndMultipleValuesFromTheirOwnFiles)
{
    writeConfig(R"({"on": true, "one": 1, "zero": 0, "text": "yes", "list": ["a", 3, "b"], "single": "c"})");
    TemporaryDirectory::write(directory.file("preferences.json"),
                              R"({"Configuration\\FrequentlyUsedBitmaps": ["x.png", "y.png"]})");
    EXPECT_TRUE(GlobalConfig().getBool("on", false));
    EXPECT_TRUE(GlobalConfig().getBool("one", false));
    EXPECT_FALSE(GlobalConfig().getBool("zero", true));
    EXPECT_TRUE(GlobalConfig().getBool("text", true)); // text is not a flag: the default
    EXPECT_FALSE(GlobalConfig().getBool("missing", false));
    EXPECT_FALSE(GlobalConfig().getBool(nullptr, false));

    const Qv::Vector<String> list = GlobalConfig().getMultipleValues("list");
    ASSERT_EQ(list.size(), 2u); // items that are not text are skipped
    EXPECT_EQ(list[0], String("a"));
    EXPECT_EQ(list[1], String("b"));
    EXPECT_EQ(GlobalConfig().getMultipleValues("single").size(), 1u);
    EXPECT_TRUE(GlobalConfig().getMultipleValues("missing").empty());

    // The user's registry is preferences.json, the key one name with its backslash.
    const Qv::Vector<String> bitmaps = UserConfig().getMultipleValues("Configuration\\FrequentlyUsedBitmaps");
    ASSERT_EQ(bitmaps.size(), 2u);
    EXPECT_EQ(bitmaps[1], String("y.png"));
    EXPECT_TRUE(GlobalConfig().getMultipleValues("Configuration\\FrequentlyUsedBitmaps").empty());
    EXPECT_EQ(UserConfig().getValue("list", String("none")), String("none"));

    // Read afresh: a change written since is seen at once.
    TemporaryDirectory::write(directory.file("preferences.json"), R"({"Configuration\\FrequentlyUsedBitmaps": "z.png"})");
    EXPECT_EQ(UserConfig().getMultipleValues("Configuration\\FrequentlyUsedBitmaps").size(), 1u);
}
