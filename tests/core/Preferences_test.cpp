#include "tela/core/Config.h"
#include "tela/core/HTMLUtils.h"
#include "tela/core/Json.h"
#include "tela/core/Preferences.h"
#include "tela/core/TimedTask.h"

#include "support/ReportCapture.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Makes `path` unreadable for as long as it lives, the way a user meets it:
// mode 000. Root reads such files anyway, so the calling thread also gives up
// the two capabilities that let it, and takes them back at the end.
class UnreadableFile {
public:
    explicit UnreadableFile(const std::string& path) : m_path(path)
    {
        ::stat(path.c_str(), &m_status);
        ::chmod(path.c_str(), 0);
        if (readable() && ::syscall(SYS_capget, &m_header, m_saved) == 0) {
            __user_cap_data_struct reduced[2] = {m_saved[0], m_saved[1]};
            reduced[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH));
            m_dropped = ::syscall(SYS_capset, &m_header, reduced) == 0;
        }
    }
    ~UnreadableFile()
    {
        if (m_dropped)
            ::syscall(SYS_capset, &m_header, m_saved);
        ::chmod(m_path.c_str(), m_status.st_mode & 07777);
    }
    UnreadableFile(const UnreadableFile&) = delete;
    UnreadableFile& operator=(const UnreadableFile&) = delete;

    bool readable() const
    {
        const int fd = ::open(m_path.c_str(), O_RDONLY);
        if (fd >= 0)
            ::close(fd);
        return fd >= 0;
    }

private:
    std::string m_path;
    struct stat m_status {};
    __user_cap_header_struct m_header {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2] {};
    bool m_dropped = false;
};

// A document `depth` levels deep: an object whose first member holds arrays
// within arrays, and a preference after them.
std::string nested(std::size_t depth)
{
    return "{\"deep\": " + std::string(depth - 1, '[') + std::string(depth - 1, ']') +
           ", \"Default font name\": \"Serif\"}";
}

class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override { Qv::reloadConfigurationFrom(directory.path().string()); }
    void TearDown() override { Qv::reloadConfigurationFrom(""); }

    TemporaryDirectory directory;
};

} // namespace

TEST_F(PreferencesTest, AChangeIsOnDiskAtOnceAndReadBackInALaterRun)
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

TEST_F(PreferencesTest, ABadFileIsKeptAsideAndAFailedWriteKeepsTheValueForTheRun)
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

TEST_F(PreferencesTest, AFileThatCannotBeReadIsReportedOnceAndNeverWrittenOver)
{
    const std::string path = directory.file("preferences.json");
    const std::string users = "{\"Default font name\": \"Serif\", \"Something of the user's\": \"kept\"}\n";
    TemporaryDirectory::write(path, users);
    {
        const UnreadableFile unreadable(path);
        if (unreadable.readable())
            GTEST_SKIP() << "this process reads mode-000 files";
        ReportCapture reports;
        EXPECT_EQ(prefs().getPreference("Default font name", String("Sans")), String("Sans"));
        EXPECT_FALSE(prefs().setPreference("Default font name", String("Mono")));
        EXPECT_FALSE(prefs().setPreference("UI : Window colour", String("336699")));
        EXPECT_EQ(prefs().getPreference("Default font name"), String("Mono")); // for this run
        EXPECT_EQ(reports.count("cannot be read"), 1) << reports.text();
        EXPECT_EQ(reports.count(path), 1) << reports.text();
    }
    EXPECT_EQ(TemporaryDirectory::read(path), users);
    EXPECT_EQ(directory.entryCount(), 1u);
}

TEST_F(PreferencesTest, ABadFileThatCannotBeSetAsideIsLeftAsItIs)
{
    const std::string path = directory.file("preferences.json");
    TemporaryDirectory::write(path, "{\"Default font name\": \"Serif\",");
    TemporaryDirectory::write(path + ".corrupt", "");
    for (int copy = 1; copy < 100; ++copy)
        TemporaryDirectory::write(path + ".corrupt." + std::to_string(copy), "");
    ReportCapture reports;
    EXPECT_EQ(prefs().getPreference("Default font name", String("Sans")), String("Sans"));
    EXPECT_FALSE(prefs().setPreference("Default font name", String("Mono")));
    EXPECT_EQ(TemporaryDirectory::read(path), "{\"Default font name\": \"Serif\",");
    EXPECT_EQ(reports.count("cannot be set aside"), 1) << reports.text();
}

TEST_F(PreferencesTest, AFileNestedTooDeepIsSetAsideSoNoWriteMeetsIt)
{
    TemporaryDirectory::write(directory.file("preferences.json"), nested(JSON::MAX_DEPTH));
    EXPECT_EQ(prefs().getPreference("Default font name"), String("Serif"));

    ReportCapture reports;
    for (const std::size_t depth : {JSON::MAX_DEPTH + 1, std::size_t{100000}}) {
        SCOPED_TRACE(depth);
        const std::string place = directory.file(std::to_string(depth));
        std::filesystem::create_directories(place);
        TemporaryDirectory::write(place + "/preferences.json", nested(depth));
        Qv::reloadConfigurationFrom(place);
        ASSERT_EQ(prefs().getPreference("Default font name", String("Sans")), String("Sans"));
        EXPECT_EQ(TemporaryDirectory::read(place + "/preferences.json.corrupt"), nested(depth));
        EXPECT_TRUE(prefs().setPreference("Default font name", String("Mono")));
        EXPECT_LT(std::filesystem::file_size(place + "/preferences.json"), 100u);
    }
    EXPECT_EQ(reports.count("nested deeper than"), 2) << reports.text();
}

TEST(HTMLUtils, ColoursGoToHexAndBack)
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

TEST(TimedTask, StagesAreCountedByNameInTheOrderFirstSeen)
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
