#include "tela/core/AtomicFile.h"

#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

TEST(AtomicFile, AWriteReplacesTheWholeFileAndLeavesNoTemporary)
{
    TemporaryDirectory directory;
    const std::string path = directory.file("preferences.json");
    ASSERT_TRUE(Qv::writeFileAtomically(path, "a longer first content"));
    ASSERT_TRUE(Qv::writeFileAtomically(path, "short"));
    String text;
    ASSERT_TRUE(Qv::readFile(path, text));
    EXPECT_EQ(text.view(), "short");
    EXPECT_EQ(directory.entryCount(), 1u);

    ASSERT_TRUE(Qv::writeFileAtomically(path, ""));
    ASSERT_TRUE(Qv::readFile(path, text));
    EXPECT_TRUE(text.empty());
    EXPECT_FALSE(text.isNull()); // read, and empty: not "no file"
}

TEST(AtomicFile, AFailedWriteSaysWhyAndLeavesTheTargetAndNoTemporary)
{
    TemporaryDirectory directory;
    std::string error;
    EXPECT_FALSE(Qv::writeFileAtomically(directory.file("no/such/dir"), "x", &error));
    EXPECT_NE(error.find("cannot create"), std::string::npos);

    // A non-empty directory cannot be renamed over: the last step fails.
    const std::string target = directory.file("taken");
    std::filesystem::create_directories(target + "/inside");
    EXPECT_FALSE(Qv::writeFileAtomically(target, "x", &error));
    EXPECT_NE(error.find("cannot replace " + target), std::string::npos) << error;
    EXPECT_TRUE(std::filesystem::is_directory(target + "/inside"));
    EXPECT_EQ(directory.entryCount(), 1u);

    String unread("kept");
    EXPECT_FALSE(Qv::readFile(directory.file("missing"), unread));
    EXPECT_EQ(unread.view(), "kept");
}

TEST(AtomicFile, AnExistingFileKeepsItsPermissions)
{
    TemporaryDirectory directory;
    const std::string path = directory.file("secret");
    ASSERT_TRUE(Qv::writeFileAtomically(path, "one"));
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    ASSERT_TRUE(Qv::writeFileAtomically(path, "two"));
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST(AtomicFile, ReadersAndOtherWritersOnlyEverSeeWholeContents)
{
    TemporaryDirectory directory;
    const std::string path = directory.file("contended");
    const std::string old_content(64 * 1024, 'o');
    const std::string new_content(100 * 1024 + 7, 'n');
    ASSERT_TRUE(Qv::writeFileAtomically(path, old_content));

    std::atomic<bool> stop{false};
    std::atomic<int> torn{0}, failed_writes{0};
    auto writer = [&](const std::string& content) {
        for (int i = 0; i < 40; ++i)
            if (!Qv::writeFileAtomically(path, content))
                ++failed_writes;
    };
    std::thread reader([&] {
        String text;
        while (!stop) {
            if (!Qv::readFile(path, text))
                ++torn; // the file must exist at every moment
            else if (text.view() != old_content && text.view() != new_content)
                ++torn;
        }
    });
    std::thread new_writer(writer, new_content);
    std::thread old_writer(writer, old_content);
    new_writer.join();
    old_writer.join();
    stop = true;
    reader.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(failed_writes, 0);
    EXPECT_EQ(directory.entryCount(), 1u); // every temporary was renamed or removed
}

TEST(AtomicFile, AWriteRemovesTheTemporariesOfGoneWritersAndNothingElse)
{
    TemporaryDirectory directory;
    // A pid that was a process a moment ago and is none now.
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    ASSERT_GT(child, 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    const std::string gone = std::to_string(child);
    const std::string target = directory.file("preferences.json");

    const std::vector<std::string> stale = {
        target + ".tmp." + gone + ".7",                      // the form without the incarnation mark
        target + ".tmp." + gone + ".18c2f0a1b.3",            // a killed writer's
        target + ".tmp." + std::to_string(::getpid()) + ".0.2", // our pid, but an earlier process that had it
    };
    const std::vector<std::string> kept = {
        target + ".tmp.1.18c2f0a1b.4",       // pid 1 is alive: it may be writing now
        target + ".tmp." + gone + ".notes",  // not a name we make
        target + ".tmp." + gone,
        target + ".old",
        directory.file("other.json.tmp." + gone + ".1"), // another target's: swept when that one is written
    };
    for (const std::string& name : stale)
        TemporaryDirectory::write(name, std::string(1024, 'x'));
    for (const std::string& name : kept)
        TemporaryDirectory::write(name, "x");

    ASSERT_TRUE(Qv::writeFileAtomically(target, "new"));
    for (const std::string& name : stale)
        EXPECT_FALSE(std::filesystem::exists(name)) << name;
    for (const std::string& name : kept)
        EXPECT_TRUE(std::filesystem::exists(name)) << name;
    EXPECT_EQ(directory.entryCount(), 1u + kept.size());
}
