#include "tela/core/Commands.h"

#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

int s_runs = 0;
void count_run() { ++s_runs; }
void do_nothing() {}

// Built before main, like the library's own debug commands.
const CommandRegistrar s_counted("Test: count a run", Cmd::Function(count_run));
const CommandRegistrar s_bound(CommandMapRec{String("Test: bound to a key"), Cmd::Function(do_nothing),
                                             Cmd::Presentation(UIString(10307), UIString(10289)), 2,
                                             MapItem(0x4000078)});

// Re-registers itself from inside its own run: the map must not be locked then.
void reregister_self()
{
    CommandMap::instance().registerCommand(
        CommandMapRec{String("Test: re-registers"), Cmd::Function(count_run), {}, 0, MapItem()});
}

} // namespace

TEST(CommandMap, StaticallyRegisteredCommandsAreFoundRunAndBoundToTheirKeys)
{
    CommandMap& map = CommandMap::instance();
    ASSERT_TRUE(map.contains(String("Test: count a run")));
    const int before = s_runs;
    EXPECT_TRUE(map.execute(String("Test: count a run")));
    EXPECT_EQ(s_runs, before + 1);
    EXPECT_FALSE(map.execute(String("No such command")));

    CommandMapRec record;
    ASSERT_TRUE(map.find(String("Test: bound to a key"), record));
    EXPECT_EQ(record.presentation.label.resourceId, 10307u);
    EXPECT_EQ(record.presentation.description.resourceId, 10289u);
    EXPECT_FALSE(record.presentation.group.hasResource());
    EXPECT_EQ(record.flags, 2);

    // Default key bindings are found by key and held key.
    EXPECT_EQ(map.commandBoundToKey(0x4000078, 0), String("Test: bound to a key"));
    EXPECT_TRUE(map.commandBoundToKey(0x4000078, 0x10).isNull()); // a held key must match too
    EXPECT_TRUE(map.commandBoundToKey(0, 0).isNull());            // unbound commands are not "bound to 0"
}

TEST(CommandMap, RegisteringANameAgainReplacesItAndNamesStaySorted)
{
    CommandMap& map = CommandMap::instance();
    map.registerCommand(CommandMapRec{String("Test: replaced"), Cmd::Function(count_run), {}, 1, MapItem()});
    map.registerCommand(CommandMapRec{String("Test: replaced"), Cmd::Function(), {}, 5, MapItem()});
    CommandMapRec record;
    ASSERT_TRUE(map.find(String("Test: replaced"), record));
    EXPECT_EQ(record.flags, 5);
    EXPECT_FALSE(map.execute(String("Test: replaced"))); // no function: nothing ran

    const Qv::Vector<String> names = map.names();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    EXPECT_EQ(std::count(names.begin(), names.end(), String("Test: replaced")), 1);

    EXPECT_TRUE(map.unregisterCommand(String("Test: replaced")));
    EXPECT_FALSE(map.unregisterCommand(String("Test: replaced")));
    EXPECT_FALSE(map.contains(String("Test: replaced")));
}

TEST(CommandMap, ACommandWithoutANameIsReportedAndRefused)
{
    ReportCapture reports;
    const std::size_t before = CommandMap::instance().names().size();
    CommandRegistrar unnamed(nullptr, Cmd::Function(count_run));
    EXPECT_EQ(reports.text(), "CommandMap::registerCommand: a command needs a name\n");
    EXPECT_EQ(CommandMap::instance().names().size(), before);
}

TEST(CommandMap, ACommandMayChangeTheMapWhileItRuns)
{
    CommandMap& map = CommandMap::instance();
    map.registerCommand(CommandMapRec{String("Test: re-registers"), Cmd::Function(reregister_self), {}, 0, MapItem()});
    EXPECT_TRUE(map.execute(String("Test: re-registers"))); // would deadlock if run under the lock
    const int before = s_runs;
    EXPECT_TRUE(map.execute(String("Test: re-registers")));
    EXPECT_EQ(s_runs, before + 1); // the record it left behind is the one that runs now
    map.unregisterCommand(String("Test: re-registers"));
}
