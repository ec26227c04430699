#include "core/Config.h"
#include "core/HTMLUtils.h"
#include "core/Preferences.h"
#include "core/TimedTask.h"

#include "TemporaryDirectory.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override { Qv::reloadConfigurationFrom(directory.path().string()); }
    void TearDown() override { Qv::reloadConfigurationFrom(""); }

    TemporaryDirectory directory;
};

} // namespace

TEST_F(PreferencesTest, a_change_is_on_disk_at_once_and_read_back_in_a_later_run)
{
    EXPECT_EQ(prefs().getPreference("Default font name", String("Sans")), String("Sans"));
    EXPECT_TRUE(prefs().setPreference("Default font name", String("Serif")));
    EXPECT_TRUE(prefs().setPreference("UI : Window colour", String("336699")));
    const std::string text = TemporaryDirectory::read(directory.file("preferences.json"));
    EXPECT_NE(text.find("\"Default font name\": \"Serif\""), std::string::npos) << text;

    // Another directory and back: the values come from the file, not from memory.
    Qv::reloadConfigurationFrom(directory.file("nowhere"));
    EXPECT_EQ(prefs().getPreference("Default font name"), String());
    Qv::reloadConfigurationFrom(directory.path().string());
    EXPECT_EQ(prefs().getPreference("Default font name"), String("Serif"));
    EXPECT_EQ(prefs().getPreference("UI : Window colour"), String("336699"));
}

TEST_F(PreferencesTest, a_bad_file_is_kept_aside_and_a_failed_write_keeps_the_value_for_the_run)
{
    TemporaryDirectory::write(directory.file("preferences.json"), "{\"Default font name\": ");
    ReportCapture reports;
    EXPECT_EQ(prefs().getPreference("Default font name", String("Sans")), String("Sans"));
    EXPECT_EQ(reports.count("not a JSON object"), 1);
    EXPECT_EQ(TemporaryDirectory::read(directory.file("preferences.json.corrupt")), "{\"Default font name\": ");
    EXPECT_TRUE(prefs().setPreference("Default font name", String("Serif")));
    EXPECT_EQ(TemporaryDirectory::read(directory.file("preferences.json.corrupt")), "{\"Default font name\": ");

    // A settings "directory" that is a file cannot be written into.
    TemporaryDirectory::write(directory.file("blocked"), "");
    Qv::reloadConfigurationFrom(directory.file("blocked"));
    EXPECT_FALSE(prefs().setPreference("Default font name", String("Mono")));
    EXPECT_EQ(reports.count("cannot be written"), 1);
    EXPECT_EQ(prefs().getPreference("Default font name"), String("Mono"));
}

TEST(HTMLUtils, colours_go_to_hex_and_back)
{
    unsigned int rgb = 0;
    ASSERT_TRUE(HTMLUtils::parseHex("#D4d0C8", rgb));
    EXPECT_EQ(rgb, 0xD4D0C8u);
    EXPECT_EQ(HTMLUtils::toHex(HTMLUtils::fromHex(rgb)), rgb);
    char text[7];
    HTMLUtils::formatHex(0x0A0B0C, text);
    EXPECT_STREQ(text, "0a0b0c");
    // Channels out of range are clamped, NaN reads as 0.
    EXPECT_EQ(HTMLUtils::toHex(NormalisedRGB(2.0f, -1.0f, std::nanf(""))), 0xFF0000u);
    for (const char* bad : {"", "#", "12345", "1234567", "12345g", "##123456"})
        EXPECT_FALSE(HTMLUtils::parseHex(bad, rgb)) << bad;
}

TEST(TimedTask, stages_are_counted_by_name_in_the_order_first_seen)
{
    Qv::TimedTask& task = Qv::TimedTaskManager::instance().task("Test frame");
    EXPECT_EQ(&task, &Qv::TimedTaskManager::instance().task("Test frame"));
    for (int run = 0; run < 3; ++run) {
        Qv::TimedTask::Run timing(task);
        timing.stage("present");
    }
    const auto stages = task.stages();
    ASSERT_EQ(stages.size(), 2u);
    EXPECT_EQ(stages[0].name, String());
    EXPECT_EQ(stages[1].name, String("present"));
    EXPECT_EQ(stages[1].runs, 3u);
}
