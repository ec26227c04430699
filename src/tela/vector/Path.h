#pragma once
// The current path: one per process, built in user coordinates and stored in
// device coordinates. Each point goes through the current matrix (CTM) as it
// is added, so a later change of the matrix leaves what is stored alone.
// Start with tela_newpath, then tela_moveto and the segment calls; the scan
// converter (ScanConverter.h) turns the result into a region.
//
// Capacity: 500 entries, allocated once by path_init. A line costs one entry,
// a curve three, a close one; two moves in a row share one. Misuse ("no
// current point", "path overflow") is reported and the call goes on: a line
// without a current point is still stored, and nothing is written past the
// 500th entry. Main thread only.

// The buffers, zeroed, with every scalar. Run once at start-up; a second
// call keeps the buffers it already has and just empties them.
void path_init();

// Building. Coordinates are user coordinates; angles are degrees.
void tela_newpath();
void tela_moveto(double x, double y);
void tela_lineto(double x, double y);
void tela_curveto(double x1, double y1, double x2, double y2, double x3, double y3);
void tela_closepath();                                        // no-op with no open subpath
void tela_addrect(double x1, double y1, double x2, double y2); // a closed rectangle
void tela_rect(double x1, double y1, double x2, double y2);   // tela_newpath, then tela_addrect
// A rectangle with quarter-circle corners; the radius is cut to half the
// smaller side, and 0 gives tela_addrect.
void tela_addsoftrect(double x1, double y1, double x2, double y2, double radius);
// Counter-clockwise from a0 to a1, normalised to one turn at most.
void tela_arc(double cx, double cy, double r, double a0, double a1);
// From a0 to a1 in the sense of their difference, in sectors of about 45
// degrees. Joins an open subpath by a line, or starts one.
void tela_arc1(double cx, double cy, double r, double a0, double a1);

// The current point.
bool tela_user_point_valid(); // any entry at all
double tela_user_x();          // user coordinates, through the inverse CTM
double tela_user_y();
double path_device_x(); // the last stored point, device coordinates
double path_device_y();
void path_check_currpoint();           // reports "no current point" on an empty path
void path_get_currpoint();             // refreshes the cached user point
void path_invalidate_user_xy();        // the CTM changed: the cached user point is stale
void path_movetopixel(double x, double y); // a move given in device coordinates
void path_origintopoint();             // the CTM's translation becomes the current point
void path_setpixelmatrix();            // the CTM becomes the identity
