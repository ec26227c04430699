#pragma once
// scan_*: the scan converter's edge collector. Straight edges go in, in the
// table's own coordinates; each is sampled at the centre of every pixel row it
// crosses, and the crossings are kept per row as x transitions sorted by x.
// The rows then come out, pairwise, as the rectangles of a region.
//
// Records come from a heap of up to 10 blocks of 80,000; nothing is freed
// record by record, and scan_reset hands back every block but the first.
// Main thread only: all of this is process-wide state.

#include "tela/core/Ptr.h"
#include "tela/platform/iRegion.h"

#include <cstdint>

class Canvas;

// One transition; also the head of a row, of which only `next` is used.
struct ScanTrans {
    std::int32_t x;          // ceil(exactX): the first pixel on the far side of the edge
    std::uint32_t direction; // bit 0: 1 counts +1 in the winding, 0 counts -1
    double exactX;
    double slope;            // change of x from one row to the next
    ScanTrans* next;
};

constexpr int SCAN_BLOCK_RECORDS = 80000;
constexpr int SCAN_MOST_BLOCKS = 10;

// The heap: the first block, kept for the process, then an empty table.
void scan_heap_init();
// Empties the table and frees every block but the first.
void scan_reset();
// The next record, or null when ten blocks are in use or a block cannot be had.
ScanTrans* scan_alloc_trans();

// A table of rows for the box; (xmin, ymin) becomes its origin. The table
// holds ymax - ymin + 2 rows, or as many as the first block has left.
void scan_begin(int xmin, int ymin, int xmax, int ymax);

// v - 0.001 when v is a whole number: an edge ending exactly on a sampling
// row would otherwise count there twice or not at all.
double scan_nudge(double v);

// An edge from (x0, y0) to (x1, y1), in table coordinates. Upward edges
// count -1, downward ones +1.
void scan_add_line(double x0, double y0, double x1, double y1);
// The edge, with yHigh not below yLow, on each row whose centre it crosses.
void scan_add_span(double xHigh, double yHigh, double xLow, double yLow, std::uint32_t direction);
// One transition on row `line`, after any of equal x. False, with a report,
// when the row is outside the table or the heap is spent: the edge stops.
bool scan_add_trans(double x, int line, std::uint32_t direction, double slope);

// Non-zero winding to alternating entry and exit, by dropping the
// transitions that stay inside.
void scan_line_wind_to_eofill(int line);
void scan_all_wind_to_eofill();
// Spans at least a pixel wide, and kept a pixel apart where there is room.
void scan_widen(int line);
void scan_widen_all(int flags); // only with flags bit 2 (value 4)

// The rows as a region in the window of the canvas's root, rows of the table
// counting upward from the origin. Null for an empty table or a null canvas.
Qv::Ptr<iRegion> scan_to_region(Canvas* canvas);
// scan_all_wind_to_eofill, then scan_to_region, in one pass.
Qv::Ptr<iRegion> scan_to_eofill_region(Canvas* canvas);

// For tests and diagnostics.
int scan_lines();
int scan_origin_x();
int scan_origin_y();
const ScanTrans* scan_first_trans(int line); // null outside the table
int scan_heap_blocks();
