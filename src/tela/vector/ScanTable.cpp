// ScanTable.cpp: the edge collector of the scan converter.
//
// Invariants
// - Row i of the table samples device y = originY + i + 0.5, and stands for
//   the pixel row [originY + i, originY + i + 1) counted upward.
// - Each row is a singly linked list from its head, sorted by exactX, equal
//   values in order of arrival from the back. A transition at x means the
//   pixels from ceil(x) on are on its far side.
// - Every record, heads included, lives in one of at most SCAN_MOST_BLOCKS
//   blocks; blocks[0] is kept for the process, the others go at scan_reset.
//   The table is valid from scan_begin until the next scan_begin or reset.
// - Coordinates reaching this file are cut to +-EDGE_LIMIT, so every
//   conversion to int below is in range whatever the path held.
//
// Reports: each kind of trouble is reported once per table. A path cut by
// the table, or by the heap, would otherwise print once for every edge of
// every flattened curve.

#include "tela/vector/ScanTable.h"

#include "tela/canvas/Canvas.h"
#include "tela/core/Log.h"
#include "tela/core/Memory.h"
#include "tela/vector/RegionBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>

static_assert(sizeof(ScanTrans) * SCAN_BLOCK_RECORDS == 2560000, "a block is 2,560,000 bytes");

namespace {

// Far beyond any window, near enough to zero that sums of a few such values
// stay well inside an int.
constexpr double EDGE_LIMIT = double(1 << 26);

enum Trouble : unsigned {
    NEGATIVE_INDEX = 1,
    INDEX_TOO_BIG = 2,
    HEAP_SPENT = 4,
    BAD_LIST = 8,
};

struct ScanHeap {
    ScanTrans* blocks[SCAN_MOST_BLOCKS] = {};
    int blockCount = 0;
    ScanTrans* bump = nullptr;
    int recordsLeft = 0;
};

struct ScanTableState {
    int lines = 0;
    ScanTrans* heads = nullptr;
    int originX = 0;
    int originY = 0;
    unsigned reported = 0;
};

ScanHeap& heap()
{
    static ScanHeap s_heap;
    return s_heap;
}

ScanTableState& table()
{
    static ScanTableState s_table;
    return s_table;
}

void report_once(Trouble trouble, const char* message)
{
    ScanTableState& t = table();
    if (t.reported & trouble)
        return;
    t.reported |= trouble;
    tela_splat(message);
}

// std::ceil(value) as an int, without the library call or its long inline
// form: this runs once for every transition. Values beyond EDGE_LIMIT give
// the limit, and NaN goes to the low end; callers filter it before it matters.
int ceil_to_int(double value)
{
    if (!(value > -EDGE_LIMIT))
        return -int(EDGE_LIMIT);
    if (value >= EDGE_LIMIT)
        return int(EDGE_LIMIT);
    const int truncated = int(value);
    return truncated + (double(truncated) < value ? 1 : 0);
}

// std::floor(value) likewise: once for every edge.
int floor_to_int(double value)
{
    if (!(value > -EDGE_LIMIT))
        return -int(EDGE_LIMIT);
    if (value >= EDGE_LIMIT)
        return int(EDGE_LIMIT);
    const int truncated = int(value);
    return truncated - (double(truncated) > value ? 1 : 0);
}

// ceil_to_int for a value known to lie inside the limits.
int ceil_inside_limits(double value)
{
    const int truncated = int(value);
    return truncated + (double(truncated) < value ? 1 : 0);
}

// Links a record for x into the sorted list after head, in front of any of
// equal x. `Inside` says x is known to lie inside the limits.
template <bool Inside = false>
void insert_trans(ScanTrans* head, ScanTrans* record, double x, std::uint32_t direction, double slope)
{
    ScanTrans* before = head;
    while (before->next && x > before->next->exactX)
        before = before->next;
    new (record) ScanTrans{Inside ? ceil_inside_limits(x) : ceil_to_int(x), direction, x, slope, before->next};
    before->next = record;
}

// insert_trans for `count` rows from `line` up, x stepping by slope; returns
// x past the last.
template <bool Inside>
double insert_run(ScanTrans* heads, ScanTrans* record, int line, int count, double x, std::uint32_t direction, double slope)
{
    for (const int end = line + count; line < end; ++line, x += slope)
        insert_trans<Inside>(&heads[line], record++, x, direction, slope);
    return x;
}

double clamp_coordinate(double value)
{
    return std::clamp(value, -EDGE_LIMIT, EDGE_LIMIT);
}

// Reduces the row after head from non-zero winding to even-odd form, handing
// each record that stays to `kept`: a record with the inside on both of its
// sides changes nothing visible, and is unlinked.
template <typename Kept>
void wind_to_eofill(ScanTrans* head, Kept&& kept)
{
    int winding = 0;
    ScanTrans* before = head;
    while (ScanTrans* record = before->next) {
        const int new_winding = winding - 1 + ((record->direction & 1) ? 2 : 0);
        if (new_winding != 0 && winding != 0) {
            if (!record->next)
                report_once(BAD_LIST, "scan_line_wind_to_eofill: bad scan list during simplify");
            before->next = record->next;
        } else {
            kept(record);
            before = record;
        }
        winding = new_winding;
    }
}

} // namespace

void scan_heap_init()
{
    // A second start-up keeps the block it has.
    if (heap().blockCount == 0)
        scan_alloc_trans();
    scan_reset();
}

void scan_reset()
{
    ScanHeap& h = heap();
    for (int block = 1; block < h.blockCount; ++block) {
        Qv::release(h.blocks[block]);
        h.blocks[block] = nullptr;
    }
    h.blockCount = std::min(h.blockCount, 1);
    h.bump = h.blocks[0];
    h.recordsLeft = h.blockCount > 0 ? SCAN_BLOCK_RECORDS : 0;
    ScanTableState& t = table();
    t.lines = 0;
    t.heads = nullptr;
    t.reported = 0;
}

ScanTrans* scan_alloc_trans()
{
    ScanHeap& h = heap();
    if (h.recordsLeft == 0) {
        if (h.blockCount >= SCAN_MOST_BLOCKS)
            return nullptr;
        void* block = Qv::allocate(sizeof(ScanTrans) * SCAN_BLOCK_RECORDS);
        if (!block)
            return nullptr;
        h.blocks[h.blockCount++] = static_cast<ScanTrans*>(block);
        h.bump = static_cast<ScanTrans*>(block);
        h.recordsLeft = SCAN_BLOCK_RECORDS;
    }
    --h.recordsLeft;
    return new (h.bump++) ScanTrans{};
}

void scan_begin(int xmin, int ymin, int xmax, int ymax)
{
    (void)xmax; // rows are as wide as their transitions make them
    scan_reset();
    ScanTableState& t = table();
    t.originX = xmin;
    t.originY = ymin;
    ScanHeap& h = heap();
    const std::int64_t wanted = std::int64_t(ymax) - ymin + 2;
    const int lines = int(std::clamp<std::int64_t>(wanted, 0, h.recordsLeft));
    // The heads are a run of records from the first block, carved in one go.
    // Only a head's link is ever read, so only the link is written.
    t.heads = h.bump;
    for (int line = 0; line < lines; ++line)
        (new (h.bump++) ScanTrans)->next = nullptr;
    h.recordsLeft -= lines;
    t.lines = lines;
}

double scan_nudge(double v)
{
    // Twice for every edge, so without std::floor: below 2^52 a fraction
    // survives truncation through an integer; beyond, every double is whole.
    if (std::fabs(v) < 0x1p52)
        return double(std::int64_t(v)) == v ? v - 0.001 : v;
    return std::isnan(v) ? v : v - 0.001;
}

void scan_add_line(double x0, double y0, double x1, double y1)
{
    if (std::isnan(x0) || std::isnan(y0) || std::isnan(x1) || std::isnan(y1))
        return;
    x0 = clamp_coordinate(x0);
    y0 = clamp_coordinate(y0);
    x1 = clamp_coordinate(x1);
    y1 = clamp_coordinate(y1);
    // The half pixel moves sampling to pixel centres.
    const double a = scan_nudge(y0 - 0.5);
    const double b = scan_nudge(y1 - 0.5);
    if (b > a)
        scan_add_span(x1 - 0.5, b, x0 - 0.5, a, 0);
    else
        scan_add_span(x0 - 0.5, a, x1 - 0.5, b, 1);
}

void scan_add_span(double xHigh, double yHigh, double xLow, double yLow, std::uint32_t direction)
{
    if (!(yHigh > yLow)) // equal, or not numbers: nothing to sample
        return;
    const int top = floor_to_int(yHigh);
    int line = ceil_to_int(yLow);
    if (line > top)
        return; // between two sampling rows
    const double slope = (xHigh - xLow) / (yHigh - yLow);
    double x = (line - yHigh) * slope + xHigh;
    ScanTableState& t = table();
    if (line < 0 || line >= t.lines) {
        scan_add_trans(x, line, direction, slope); // reports, and the edge stops
        return;
    }
    // scan_add_trans row by row, with the heap's bump pointer held here
    // rather than in memory: the rows inside the table first, as many as the
    // block has records for in one run, then the rest one by one; then, for
    // an edge running past the end, the report that stops it there.
    const int last = std::min(top, t.lines - 1);
    ScanHeap& h = heap();
    const int inBlock = std::min(last - line + 1, h.recordsLeft);
    // x steps evenly: when its first and last values in the run are well
    // inside the limits (and numbers), so is every x, and the run can skip
    // the checks a record would otherwise make.
    constexpr double INSIDE = EDGE_LIMIT / 2;
    const double lastX = x + (inBlock - 1) * slope;
    x = std::fabs(x) < INSIDE && std::fabs(lastX) < INSIDE
            ? insert_run<true>(t.heads, h.bump, line, inBlock, x, direction, slope)
            : insert_run<false>(t.heads, h.bump, line, inBlock, x, direction, slope);
    line += inBlock;
    h.bump += inBlock;
    h.recordsLeft -= inBlock;
    for (; line <= last; ++line, x += slope) {
        if (!scan_add_trans(x, line, direction, slope))
            return;
    }
    if (top > last)
        scan_add_trans(x, last + 1, direction, slope); // reports the row past the end
}

bool scan_add_trans(double x, int line, std::uint32_t direction, double slope)
{
    ScanTableState& t = table();
    if (line < 0) {
        report_once(NEGATIVE_INDEX, "scan_add_trans: negative index!\n");
        return false;
    }
    if (line >= t.lines) {
        report_once(INDEX_TOO_BIG, "scan_add_trans: index too big!\n");
        return false;
    }
    ScanTrans* const record = scan_alloc_trans();
    if (!record) {
        report_once(HEAP_SPENT, "not enough scan-conversion heap");
        return false;
    }
    insert_trans(&t.heads[line], record, x, direction, slope);
    return true;
}

void scan_line_wind_to_eofill(int line)
{
    ScanTableState& t = table();
    if (line < 0 || line >= t.lines)
        return;
    wind_to_eofill(&t.heads[line], [](const ScanTrans*) {});
}

void scan_all_wind_to_eofill()
{
    for (int line = 0; line < table().lines; ++line)
        scan_line_wind_to_eofill(line);
}

void scan_widen(int line)
{
    ScanTableState& t = table();
    if (line < 0 || line >= t.lines || !t.heads[line].next)
        return;
    const ScanTrans* previous = t.heads[line].next;
    int index = 1;
    for (ScanTrans* record = previous->next; record; record = record->next, ++index) {
        if (index % 2 == 1) {
            if (record->x <= previous->x)
                record->x = previous->x + 1; // a span is at least one pixel wide
        } else if (record->x <= previous->x && record->next && record->next->x >= previous->x + 3) {
            record->x = previous->x + 1; // spans kept apart only where there is room
        }
        previous = record;
    }
}

void scan_widen_all(int flags)
{
    if (!(flags & 4))
        return;
    for (int line = 0; line < table().lines; ++line)
        scan_widen(line);
}

namespace {

// The spans of a row as its records go by, as [left, right): the records
// taken in pairs, the first opening and the next closing, empty pairs left
// out and pairs that touch or overlap the span joined to it. An odd last
// record opens a span that nothing closes, and adds nothing.
class SpanReader {
public:
    SpanReader(Tela::RegionBuilder& builder, int originX, int windowY)
        : m_builder(builder), m_originX(originX), m_windowY(windowY)
    {
    }

    void add(int x)
    {
        if (!m_pairOpen) {
            m_pairOpen = true;
            m_opening = x;
            return;
        }
        m_pairOpen = false;
        if (x <= m_opening)
            return;
        if (m_spanOpen && m_opening >= m_left && m_opening <= m_right) {
            m_right = std::max(m_right, x);
            return;
        }
        flush();
        m_spanOpen = true;
        m_left = m_opening;
        m_right = x;
    }

    void flush()
    {
        if (m_spanOpen)
            m_builder.appendBandRect({m_left + m_originX, m_windowY - 1, m_right + m_originX, m_windowY});
        m_spanOpen = false;
    }

private:
    Tela::RegionBuilder& m_builder;
    const int m_originX;
    const int m_windowY;
    bool m_pairOpen = false;
    int m_opening = 0;
    bool m_spanOpen = false;
    int m_left = 0;
    int m_right = 0;
};

// The rectangles of a row into the builder; with `windToEvenOdd`, the row is
// reduced to even-odd form as it is read, as scan_line_wind_to_eofill would.
// One walk of the list: the records are scattered over the heap, and
// following their links is what a row costs.
void read_row(ScanTrans* head, bool windToEvenOdd, SpanReader& spans)
{
    if (!windToEvenOdd) {
        for (const ScanTrans* record = head->next; record; record = record->next)
            spans.add(record->x);
        spans.flush();
        return;
    }
    wind_to_eofill(head, [&spans](const ScanTrans* record) { spans.add(record->x); });
    spans.flush();
}

// The spans of a short row whose transitions pair off, opening and closing
// in opposite senses, read in one walk without touching the table: winding
// is back at zero after every pair, so winding would drop nothing and the
// row is already in even-odd form. Spans are joined and dropped as
// SpanReader does.
struct SimpleRow {
    static constexpr int MOST_SPANS = 8;
    int count = 0;
    int left[MOST_SPANS];
    int right[MOST_SPANS];

    // False for a longer row, or, when winding counts, one with a pair
    // running the same way: those take the general road.
    bool read(const ScanTrans* record, bool windToEvenOdd, int originX)
    {
        while (record) {
            const ScanTrans* const closing = record->next;
            if (!closing)
                return true; // an odd last record closes nothing
            if (windToEvenOdd && !((record->direction ^ closing->direction) & 1))
                return false;
            const int opening = record->x + originX;
            const int end = closing->x + originX;
            if (end > opening) {
                if (count > 0 && opening >= left[count - 1] && opening <= right[count - 1]) {
                    right[count - 1] = std::max(right[count - 1], end);
                } else {
                    if (count == MOST_SPANS)
                        return false;
                    left[count] = opening;
                    right[count] = end;
                    ++count;
                }
            }
            record = closing->next;
        }
        return true;
    }

    bool repeats(const Tela::RegionBuilder& builder, std::size_t band, std::size_t bandSize) const
    {
        if (bandSize != std::size_t(count))
            return false;
        for (int index = 0; index < count; ++index)
            if (builder[band + index].left != left[index] || builder[band + index].right != right[index])
                return false;
        return true;
    }
};

// scan_to_region, optionally reducing each row to even-odd form just before
// it is read: the same table and the same region as reducing every row
// first, in one pass over the records instead of two.
Qv::Ptr<iRegion> emit_region(Canvas* canvas, bool windToEvenOdd)
{
    const ScanTableState& t = table();
    if (!canvas) {
        if (windToEvenOdd)
            scan_all_wind_to_eofill();
        return nullptr;
    }
    int lowest = 0;
    while (lowest < t.lines && !t.heads[lowest].next)
        ++lowest;
    int highest = t.lines - 1;
    while (highest > lowest && !t.heads[highest].next)
        --highest;
    if (lowest >= t.lines)
        return nullptr;

    // A row's spans are at most half its records: room for them all at
    // once, rather than growing the builder as the rows come.
    const ScanHeap& h = heap();
    const std::size_t records = std::size_t(h.blockCount) * SCAN_BLOCK_RECORDS - std::size_t(h.recordsLeft) - std::size_t(t.lines);
    Tela::RegionBuilder builder(std::max(std::size_t(highest - lowest + 1), records / 2 + 1));
    const int root_height = canvas->getRootParent()->getHeight();
    // From the highest row down, so rectangles arrive top first in the window.
    // A run of rows with the same spans becomes one band of rectangles as
    // tall as the run: the rectangles arrive in the banded form regions
    // keep, and the platform can take them as they are. Each row goes in,
    // and is taken back out when it repeats the band above.
    std::size_t band = 0;      // first rectangle of the band above
    std::size_t bandSize = 0;  // and how many it has
    for (int line = highest; line >= lowest; --line) {
        const int window_y = root_height - t.originY - line;
        // The commonest rows by far: a few pairs of transitions, each pair
        // running one way and back, which winding leaves as they are. Their
        // spans are held against the band above before they go in.
        SimpleRow simple;
        if (simple.read(t.heads[line].next, windToEvenOdd, t.originX)) {
            if (line < highest && simple.repeats(builder, band, bandSize)) {
                builder.extendBand(bandSize, window_y);
                continue;
            }
            band = builder.size();
            bandSize = std::size_t(simple.count);
            for (int index = 0; index < simple.count; ++index)
                builder.appendBandRect({simple.left[index], window_y - 1, simple.right[index], window_y});
            continue;
        }
        const std::size_t row = builder.size();
        SpanReader spans(builder, t.originX, window_y);
        read_row(&t.heads[line], windToEvenOdd, spans);
        const std::size_t rowSize = builder.size() - row;
        if (line < highest && rowSize == bandSize) {
            std::size_t index = 0;
            while (index < bandSize && builder[row + index].left == builder[band + index].left &&
                   builder[row + index].right == builder[band + index].right)
                ++index;
            if (index == bandSize) {
                builder.dropLast(rowSize);
                builder.extendBand(bandSize, window_y);
                continue;
            }
        }
        band = row;
        bandSize = rowSize;
    }
    return builder.create();
}

} // namespace

Qv::Ptr<iRegion> scan_to_region(Canvas* canvas)
{
    return emit_region(canvas, false);
}

Qv::Ptr<iRegion> scan_to_eofill_region(Canvas* canvas)
{
    return emit_region(canvas, true);
}

int scan_lines()
{
    return table().lines;
}

int scan_origin_x()
{
    return table().originX;
}

int scan_origin_y()
{
    return table().originY;
}

const ScanTrans* scan_first_trans(int line)
{
    const ScanTableState& t = table();
    if (line < 0 || line >= t.lines)
        return nullptr;
    return t.heads[line].next;
}

int scan_heap_blocks()
{
    return heap().blockCount;
}
