#pragma once
// EventTypes: the names of the bits of an event's `type` word, and of the
// words the library itself makes. Everything that builds or tests a type word
// uses these; the classification predicates in Event.h are built on them.
//
// The word is a bit pattern, not an enumeration: a left double-click press is
// MOUSE_CLASS | DOUBLE_CLICK | LEFT | DOWN, and each predicate tests one part.
// Applications compare against the numbers, so every value is fixed.

#include <cstdint>

namespace EventType {

// The mouse subtype: the low four bits of a mouse event.
constexpr std::uint32_t SUBTYPE_MASK = 15;
constexpr std::uint32_t UP = 1;
constexpr std::uint32_t DOWN = 2;
constexpr std::uint32_t HOVER = 3;             // classified and coalesced, never made here
constexpr std::uint32_t MOVE = 4;
constexpr std::uint32_t CHORD = 5;
constexpr std::uint32_t WHEEL = 6;

// Set with UP only, on the event that tells the capturing canvas it lost the mouse.
constexpr std::uint32_t CAPTURE_LOST = 0x10;

// Buttons; also the button bits of the mouse click state word.
constexpr std::uint32_t LEFT = 0x20;
constexpr std::uint32_t RIGHT = 0x40;
constexpr std::uint32_t MIDDLE = 0x80;

// Classes: the bits a canvas's `interest` mask and event_flush select by.
constexpr std::uint32_t MOUSE_CLASS = 0x100;
constexpr std::uint32_t KEY_PRESS = 0x200;     // a key press is exactly this word
constexpr std::uint32_t KEY_RELEASE = 0x400;   // a key release is exactly this word
constexpr std::uint32_t TIMER_CLASS = 0x1000;
constexpr std::uint32_t MESSAGE_CLASS = 0x4000;

// Click flags, carried by presses, releases and drags of a multiple click.
constexpr std::uint32_t TRIPLE_CLICK = 0x2000;
constexpr std::uint32_t DOUBLE_CLICK = 0x8000;

// The words the library makes.
constexpr std::uint32_t LEFT_UP = MOUSE_CLASS | LEFT | UP;
constexpr std::uint32_t RIGHT_UP = MOUSE_CLASS | RIGHT | UP;
constexpr std::uint32_t MIDDLE_UP = MOUSE_CLASS | MIDDLE | UP;
constexpr std::uint32_t LEFT_DOWN = MOUSE_CLASS | LEFT | DOWN;
constexpr std::uint32_t RIGHT_DOWN = MOUSE_CLASS | RIGHT | DOWN;
constexpr std::uint32_t MIDDLE_DOWN = MOUSE_CLASS | MIDDLE | DOWN;
constexpr std::uint32_t LEFT_DOUBLE_DOWN = DOUBLE_CLICK | LEFT_DOWN;
constexpr std::uint32_t LEFT_TRIPLE_DOWN = TRIPLE_CLICK | LEFT_DOWN;
constexpr std::uint32_t LEFT_DOUBLE_UP = DOUBLE_CLICK | LEFT_UP;
constexpr std::uint32_t LEFT_TRIPLE_UP = TRIPLE_CLICK | LEFT_UP;
constexpr std::uint32_t MOUSE_CHORD = MOUSE_CLASS | CHORD;
constexpr std::uint32_t MOUSE_WHEEL = MOUSE_CLASS | WHEEL;
// A move with a button held: ORed with the click state, so it carries the
// buttons and the double and triple flags of the press that began it.
constexpr std::uint32_t MOUSE_DRAG = MOUSE_CLASS | MOVE;
// The capturing canvas lost the mouse: ORed with the click state too.
constexpr std::uint32_t MOUSE_LOST = MOUSE_CLASS | CAPTURE_LOST | UP;
constexpr std::uint32_t TIMER_TICK = TIMER_CLASS | 1;
constexpr std::uint32_t MESSAGE = MESSAGE_CLASS | 1;
// Never made here, but a queued one counts as a message when sends are
// made idempotent, so the word stays reserved.
constexpr std::uint32_t MESSAGE_RESERVED = MESSAGE_CLASS | 2;

// The words applications already compare against; they must never move.
static_assert(LEFT_UP == 289 && RIGHT_UP == 321 && MIDDLE_UP == 385);
static_assert(LEFT_DOWN == 290 && RIGHT_DOWN == 322 && MIDDLE_DOWN == 386);
static_assert(LEFT_DOUBLE_DOWN == 33058 && LEFT_TRIPLE_DOWN == 8482);
static_assert(LEFT_DOUBLE_UP == 33057 && LEFT_TRIPLE_UP == 8481);
static_assert(MOUSE_CHORD == 261 && MOUSE_WHEEL == 262);
static_assert(MOUSE_DRAG == 0x104 && MOUSE_LOST == 0x111);
static_assert(KEY_PRESS == 512 && KEY_RELEASE == 1024);
static_assert(TIMER_TICK == 4097 && MESSAGE == 16385 && MESSAGE_RESERVED == 0x4002);

} // namespace EventType
