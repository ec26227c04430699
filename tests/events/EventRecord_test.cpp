#include "tela/events/Event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(EventRecord, PredicatesTestBitsOfTheTypeWord)
{
    struct Row {
        unsigned type;
        bool mouse, up, down, move, left, right, middle, double_click, triple_click;
    };
    const Row rows[] = {
        {0x121, true, true, false, false, true, false, false, false, false},
        {0x142, true, false, true, false, false, true, false, false, false},
        {0x182, true, false, true, false, false, false, true, false, false},
        {0x8122, true, false, true, false, true, false, false, true, false}, // a double click is still a down
        {0x2121, true, true, false, false, true, false, false, false, true},
        {0x124, true, false, false, true, true, false, false, false, false},
        {0x8000 | 0x200, false, false, false, false, false, false, false, false, false},
        {0x4001, false, false, false, false, false, false, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        const Event e(row.type);
        EXPECT_EQ(mouse_event(e), row.mouse);
        EXPECT_EQ(mouse_up_event(e), row.up);
        EXPECT_EQ(mouse_down_event(e), row.down);
        EXPECT_EQ(mouse_move_event(&e), row.move);
        EXPECT_EQ(mouse_left_event(e), row.left);
        EXPECT_EQ(mouse_right_event(&e), row.right);
        EXPECT_EQ(mouse_middle_event(e), row.middle);
        EXPECT_EQ(mouse_double_click_event(e), row.double_click);
        EXPECT_EQ(mouse_triple_click_event(&e), row.triple_click);
    }
    const Event* none = nullptr;
    EXPECT_FALSE(mouse_event(none));
    EXPECT_FALSE(isKeyPressEvent(none));
    EXPECT_TRUE(isKeyPressEvent(Event(512)));
    EXPECT_FALSE(isKeyPressEvent(Event(512 | 0x100)));
    EXPECT_TRUE(isKeyReleaseEvent(Event(1024)));
}

TEST(EventRecord, KeysMovesAndZoom)
{
    EXPECT_FALSE(Tela::isPlainKey(0));
    EXPECT_TRUE(Tela::isPlainKey(0xFFFF));
    EXPECT_FALSE(Tela::isPlainKey(0x10000));

    Event e(512);
    e.heldKey = 17;
    e.keyRepeat = 1;
    e.keyCode(65);
    EXPECT_EQ(e.keyCode(), 65u);
    EXPECT_EQ(e.heldKey, 0u);
    EXPECT_EQ(e.keyRepeat, 0u);

    Event move(0x104);
    move.distance({4, 0});
    EXPECT_TRUE(isMouseMoveSignificant(move));
    move.distance({3, 3});
    EXPECT_FALSE(isMouseMoveSignificant(move));
    move.distance({-10, -10});
    EXPECT_FALSE(isMouseMoveSignificant(move));

    Event wheel(0x106);
    EXPECT_FALSE(mouse_zoom_event(wheel));
    wheel.key = 0x100000;
    EXPECT_TRUE(mouse_zoom_event(wheel));
    wheel.key = 0x2000000;
    EXPECT_TRUE(mouse_zoom_event(wheel));
    EXPECT_FALSE(mouse_zoom_event(Event(0x104)));
}

TEST(EventPool, TheFortyFirstRecordComesFromTheHeapAndReturnsToThePool)
{
    delete new Event; // the pool is filled on first use
    const std::size_t made = Event::poolRecordCount();
    const std::size_t free_before = Event::poolFreeCount();
    ASSERT_EQ(made, free_before); // nothing else holds a record now
    std::vector<Event*> held;
    for (std::size_t i = 0; i < free_before; ++i)
        held.push_back(new Event);
    EXPECT_EQ(Event::poolFreeCount(), 0u);
    EXPECT_EQ(Event::poolRecordCount(), made);
    held.push_back(new Event); // the pool grows
    EXPECT_EQ(Event::poolRecordCount(), made + 1);
    for (Event* e : held)
        delete e;
    EXPECT_EQ(Event::poolFreeCount(), made + 1);
    EXPECT_GE(made, 40u);
}

// Threads that take and give back records at once must never be handed the
// same record twice, and every record must be back on the stack afterwards.
TEST(EventPool, ConcurrentTakersNeverShareARecordAndAllComeBack)
{
    delete new Event;
    const std::size_t free_before = Event::poolFreeCount();
    constexpr int THREADS = 4;
    constexpr int ROUNDS = 20000;
    std::atomic<int> shared_records{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < ROUNDS; ++i) {
                Event* held[3];
                for (Event*& e : held) {
                    e = new Event;
                    e->key = static_cast<std::uint32_t>(t); // the taker's mark
                }
                for (Event* e : held)
                    if (e->key != static_cast<std::uint32_t>(t))
                        shared_records.fetch_add(1);
                for (Event* e : held)
                    delete e;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(shared_records.load(), 0);
    EXPECT_EQ(Event::poolFreeCount(), Event::poolRecordCount());
    EXPECT_GE(Event::poolFreeCount(), free_before);
}
