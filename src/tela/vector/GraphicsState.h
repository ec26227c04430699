#pragma once
// The process-wide drawing state of the path API: current matrix (CTM), line
// width, flatness, current colour and current canvas, saved and restored on a
// stack of 40 entries. Main thread only: nothing here locks, and even the
// transform helpers share one result point, so none of them is re-entrant.

#include "tela/core/Angles.h" // norm_angle360, which tela_rotate wraps with
#include "tela/core/RefCount.h"

class Canvas;

// Cleared by every change of the CTM; the inverse is recomputed on first need.
extern int CTM_inverse_is_valid;

// Save and restore. Overflow and underflow are reported and the operation goes
// on regardless: callers alone keep the depth between 0 and 40.
void tela_gsave();
void tela_grestore();

// The CTM as six numbers: rows (a, c, e) and (b, d, f).
void tela_setmatrix(double a, double b, double c, double d, double e, double f);
void tela_currentmatrix(double* a, double* b, double* c, double* d, double* e, double* f);
void tela_concat(double a, double b, double c, double d, double e, double f); // CTM = CTM * M
void tela_translate(double tx, double ty);
void tela_scale(double sx, double sy);
void tela_rotate(double degrees);
void CTM_update(const double m[3][3]);

void tela_setlinewidth(double width); // negative widths store 0.0
double tela_currentlinewidth();
void tela_setflatness(double flatness); // never below 0.01
double tela_currentflatness();

// Transform helpers for the path builder and scan converter. Each writes the
// one shared result point, which the caller reads at once.
struct GStatePoint {
    double x;
    double y;
};
const GStatePoint& gstate_user_to_device(double x, double y);
const GStatePoint& gstate_user_to_device_vector(double dx, double dy);
const GStatePoint& gstate_device_to_user(double x, double y);
const GStatePoint& gstate_device_to_user_vector(double dx, double dy);
const double (&gstate_ctm())[3][3];

// Canvas deletion must not leave a dead canvas where a later grestore would
// reinstate it.
bool gstate_stack_holds_canvas(const Canvas* canvas);
void gstate_stack_replace_canvas(const Canvas* dead, Canvas* replacement);

// The stack depth, for tests and diagnostics.
int gstate_depth();

namespace Tela {

// gsave on construction, grestore on destruction. A copy saves nothing but
// still restores, so copying unbalances the stack: copy only if you mean it.
class StateSaver : public virtual Qv::InternalRefCount, public virtual iVirtual {
public:
    StateSaver();
    StateSaver(const StateSaver&) = default;
    StateSaver& operator=(const StateSaver&) { return *this; }
    ~StateSaver() override;
};

} // namespace Tela
