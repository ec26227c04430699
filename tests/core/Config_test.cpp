#include "core/AtomicFile.h"
#include "core/Commands.h"
#include "core/Config.h"

#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

class ConfigTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_directory = std::filesystem::temp_directory_path() /
                      ("tela-config-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(m_directory);
        std::filesystem::create_directories(m_directory);
        Qv::reloadConfigurationFrom(m_directory.string());
    }
    void TearDown() override
    {
        Qv::reloadConfigurationFrom("");
        std::filesystem::remove_all(m_directory);
    }
    void write(const std::string& text)
    {
        std::ofstream(m_directory / "config.json") << text;
        Qv::reloadConfigurationFrom(m_directory.string());
    }

    std::filesystem::path m_directory;
};

} // namespace

TEST_F(ConfigTest, values_defaults_and_bounds)
{
    write(R"({"eTimePerSec": 25.5, "big": 1e12, "small": -7, "text": "12", "half": 2.9})");
    EXPECT_EQ(config_double("eTimePerSec", 18.2), 25.5);
    EXPECT_EQ(config_double("missing", 18.2), 18.2);
    EXPECT_EQ(config_int("big", 1), INT_MAX); // clamped, not wrapped
    EXPECT_EQ(config_int("small", 1, 0, 10), 0);
    EXPECT_EQ(config_int("text", 3), 3); // not a number: the default
    EXPECT_EQ(config_int("half", 0), 2);
    EXPECT_EQ(config_int(nullptr, 4), 4);
}

TEST_F(ConfigTest, a_missing_file_gives_defaults_silently)
{
    ReportCapture reports;
    EXPECT_EQ(config_int("discard_stale_mouse_events", 1), 1);
    EXPECT_TRUE(reports.text().empty());
}

TEST_F(ConfigTest, a_corrupt_file_is_reported_once_and_kept_aside)
{
    write("{ \"a\": 1,, }");
    ReportCapture reports;
    EXPECT_EQ(config_int("a", 7), 7);
    EXPECT_EQ(config_int("a", 7), 7);
    EXPECT_EQ(reports.count("is not a JSON object"), 1);
    EXPECT_FALSE(std::filesystem::exists(m_directory / "config.json"));
    std::ifstream kept(m_directory / "config.json.corrupt");
    std::string text((std::istreambuf_iterator<char>(kept)), {});
    EXPECT_EQ(text, "{ \"a\": 1,, }");
}

TEST_F(ConfigTest, atomic_writes_replace_whole_files_and_leave_no_temporary)
{
    const std::string path = (m_directory / "preferences.json").string();
    ASSERT_TRUE(Qv::writeFileAtomically(path, "first"));
    ASSERT_TRUE(Qv::writeFileAtomically(path, "second, longer"));
    std::string text;
    ASSERT_TRUE(Qv::readFile(path, text));
    EXPECT_EQ(text, "second, longer");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_directory), {}), 1);

    std::string error;
    EXPECT_FALSE(Qv::writeFileAtomically((m_directory / "no" / "such" / "dir").string(), "x", &error));
    EXPECT_NE(error.find("cannot create"), std::string::npos);
}

namespace {
int s_runs = 0;
void count_run() { ++s_runs; }
const CommandRegistrar s_registered("Test: count a run", Cmd::Function(count_run));
} // namespace

TEST(Commands, statically_registered_commands_are_found_and_run)
{
    CommandMap& map = CommandMap::instance();
    EXPECT_TRUE(map.contains(String("Test: count a run")));
    EXPECT_TRUE(map.execute(String("Test: count a run")));
    EXPECT_EQ(s_runs, 1);
    EXPECT_FALSE(map.execute(String("No such command")));
}
