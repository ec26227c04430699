#pragma once
// Event: the one record that travels through the queue. Mouse, keyboard, timer
// and message events share this fixed-size value; its `type` word is a bit
// pattern, classified by the free predicates below rather than by a switch.
//
// Type word: low four bits the mouse subtype (1 up, 2 down, 3 hover, 4 move,
// 5 chord, 6 wheel); 0x10 capture lost; buttons 0x20 left, 0x40 right, 0x80
// middle; classes 0x100 mouse, 0x200 key press, 0x400 key release, 0x1000
// timer, 0x4000 message; flags 0x8000 second and 0x2000 third click. The
// names of these bits and of the words made here are in EventTypes.h.
//
// Records come from a process-wide pool: after warm-up, making one is a pop
// from a lock-free stack and never touches the general heap.

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/events/EventTypes.h"
#include "tela/platform/Geometry.h"

#include <cstddef>
#include <cstdint>

class Canvas;
class EventHandler;

struct Event {
    Event() = default;
    Event(unsigned int eventType) : type(eventType) {}
    // Every field is copied, the links included; the string and the payload
    // are shared, not cloned. The queue overwrites its own fields afterwards.
    Event(const Event& other) = default;
    Event& operator=(const Event& other) = default;
    ~Event() = default; // releases `data` and `msg`, and touches no queue

    // Pooled allocation: 40 records made on first use, more when they run
    // out; records go back to the pool, never to the heap.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;
    // Records the pool has made so far (preallocated and grown), for tests
    // that count heap blocks.
    static std::size_t poolRecordCount();
    static std::size_t poolFreeCount();

    bool valid() const { return type != 0; }
    int mouseWheelDelta() const { return wheelDelta; }
    unsigned keyCode() const { return key; }
    void keyCode(unsigned code);
    XY<int> pos() const { return m_pos; }
    void pos(const XY<int>& p) { m_pos = p; }
    XY<int> downPos() const { return m_downPos; }
    void downPos(const XY<int>& p) { m_downPos = p; }
    XY<int> screenPos() const { return m_screenPos; }
    void screenPos(const XY<int>& p) { m_screenPos = p; }
    XY<int> screenDownPos() const { return m_screenDownPos; }
    void screenDownPos(const XY<int>& p) { m_screenDownPos = p; }
    XY<int> distance() const { return m_distance; }
    void distance(const XY<int>& p) { m_distance = p; }
    unsigned getMouseButtonsState() const { return mouseButtons; }
    void setMouseButtonsState(unsigned state) { mouseButtons = state; }
    bool isPartOfChordEvent() const { return partOfChord; }
    void setIsPartOfChordEvent(bool chord) { partOfChord = chord; }
    const LightweightString<char>& msg() const { return m_msg; }
    void message(const LightweightString<char>& name) { m_msg = name; }
    const Qv::Ptr<iObject>& data() const { return m_data; }
    void data(const Qv::Ptr<iObject>& payload) { m_data = payload; }
    // `handler` when set, otherwise the client of `canvas`, otherwise null.
    EventHandler* getEventHandlerObj() const;
    void setEventHandlerObj(EventHandler* target) { handler = target; }

    // The modifier bits held now, asked of the windowing service.
    static unsigned getKeyboardModifiers();

    Event* link = nullptr;          // the pool's free list; meaningless in use
    std::uint32_t type = 0;         // 0: no event, or a cancelled one
    std::int32_t wheelDelta = 0;
    std::uint32_t time = 0;         // milliseconds, as the input was stamped
    Event* next = nullptr;          // the queue: the next older event
    bool coalescable = false;       // a queued mouse event a later one may replace
    Canvas* canvas = nullptr;
    iObject* sender = nullptr;
    bool intercepting = false;
    std::uint32_t heldKey = 0;      // complex key events: the key still held
    std::uint32_t key = 0;          // key code and modifier bits
    std::uint32_t keyRepeat = 0;
    // The accessors of the next fields carry the fields' own names, so the
    // fields themselves take the m_ prefix; order and layout are unchanged.
    XY<int> m_pos;                    // in the coordinates of `canvas`, set on receipt
    XY<int> m_downPos;
    XY<int> m_screenPos;              // bottom-up screen coordinates
    XY<int> m_screenDownPos;
    XY<int> m_distance;               // travelled since the last press
    std::uint32_t mouseButtons = 0; // the click state when the event was made
    bool partOfChord = false;
    LightweightString<char> m_msg;  // the accessor pair names it: msg(), message(name)
    EventHandler* handler = nullptr; // direct target; wins over canvas's client
    Qv::Ptr<iObject> m_data;
    // The queue's link the other way, to the next newer event, which lets the
    // oldest event be taken without walking the queue.
    Event* newer = nullptr;
    // The queue's mark on a queued event whose payload is its own handler (a
    // deferred action and its wrapper), set only by event_send_owning.
    bool ownsHandler = false;
};

// Classification. The pointer forms are false for null.
bool mouse_event(const Event& e);
bool mouse_up_event(const Event& e);
bool mouse_down_event(const Event& e);
bool mouse_hover_event(const Event& e);
bool mouse_move_event(const Event& e);
bool mouse_chord_event(const Event& e);
bool mouse_wheel_event(const Event& e);
bool mouse_left_event(const Event& e);
bool mouse_right_event(const Event& e);
bool mouse_middle_event(const Event& e);
bool mouse_double_click_event(const Event& e);
bool mouse_triple_click_event(const Event& e);
bool mouse_zoom_event(const Event& e);
bool isMouseMoveSignificant(const Event& e);
bool isKeyPressEvent(const Event& e);
bool isKeyReleaseEvent(const Event& e);

bool mouse_event(const Event* e);
bool mouse_up_event(const Event* e);
bool mouse_down_event(const Event* e);
bool mouse_hover_event(const Event* e);
bool mouse_move_event(const Event* e);
bool mouse_chord_event(const Event* e);
bool mouse_wheel_event(const Event* e);
bool mouse_left_event(const Event* e);
bool mouse_right_event(const Event* e);
bool mouse_middle_event(const Event* e);
bool mouse_double_click_event(const Event* e);
bool mouse_triple_click_event(const Event* e);
bool mouse_zoom_event(const Event* e);
bool isMouseMoveSignificant(const Event* e);
bool isKeyPressEvent(const Event* e);
bool isKeyReleaseEvent(const Event* e);

bool eventWasChordEvent(const Event& e);
// The test that admits an event to coalescing: a mouse hover or move.
bool mouse_move_or_hover_event(const Event& e);

namespace Tela {
// A key value with no modifier or class bits, and not 0.
bool isPlainKey(unsigned key);
} // namespace Tela
