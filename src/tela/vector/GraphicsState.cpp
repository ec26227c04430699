#include "tela/vector/GraphicsState.h"

#include "tela/canvas/Canvas.h"
#include "tela/colour/CurrentColour.h"
#include "tela/core/Log.h"
#include "tela/core/Ptr.h"
#include "tela/vector/Matrix.h"
#include "tela/vector/Path.h"

#include <cmath>
#include <cstring>

int CTM_inverse_is_valid = 0;

namespace {

constexpr int STACK_SIZE = 40;
constexpr double MINIMUM_FLATNESS = 0.01;
constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;

struct SavedState {
    double matrix[3][3];
    double lineWidth;
    double flatness;
    int colour;
    Canvas* canvas;
    Qv::Ptr<iObject> unused; // kept for layout; released with the array
};

struct GraphicsState {
    double ctm[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    double inverse[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    GStatePoint result{0.0, 0.0};
    double lineWidth = 1.0;
    double flatness = 1.0;
    SavedState stack[STACK_SIZE]{};
    int depth = 0;
};

GraphicsState& state()
{
    static GraphicsState s_state;
    return s_state;
}

const double (&inverse_ctm())[3][3]
{
    GraphicsState& gs = state();
    if (CTM_inverse_is_valid == 0) {
        // A singular CTM keeps the previous inverse until the next change.
        mat3_inv(gs.ctm, gs.inverse);
        CTM_inverse_is_valid = 1;
    }
    return gs.inverse;
}

} // namespace

void tela_gsave()
{
    GraphicsState& gs = state();
    if (gs.depth >= STACK_SIZE)
        tela_splat("overflow on gsave");
    if (gs.depth < 0 || gs.depth >= STACK_SIZE) {
        ++gs.depth; // the save goes on, but there is no entry to write
        return;
    }
    SavedState& entry = gs.stack[gs.depth++];
    entry.canvas = tela_currentcanvas();
    entry.lineWidth = gs.lineWidth;
    entry.flatness = gs.flatness;
    entry.colour = tela_getcolour();
    std::memcpy(entry.matrix, gs.ctm, sizeof gs.ctm);
}

void tela_grestore()
{
    GraphicsState& gs = state();
    if (gs.depth < 1)
        tela_splat("underflow on grestore");
    --gs.depth;
    if (gs.depth < 0 || gs.depth >= STACK_SIZE)
        return; // no entry to read: the report above is all there is
    const SavedState& entry = gs.stack[gs.depth];
    tela_setcanvas(entry.canvas);
    tela_setlinewidth(entry.lineWidth);
    tela_setflatness(entry.flatness);
    tela_setcolour(entry.colour);
    CTM_update(entry.matrix);
}

void tela_setmatrix(double a, double b, double c, double d, double e, double f)
{
    const double m[3][3] = {{a, c, e}, {b, d, f}, {0, 0, 1}};
    CTM_update(m);
}

void tela_currentmatrix(double* a, double* b, double* c, double* d, double* e, double* f)
{
    const auto& ctm = state().ctm;
    *a = ctm[0][0];
    *b = ctm[1][0];
    *c = ctm[0][1];
    *d = ctm[1][1];
    *e = ctm[0][2];
    *f = ctm[1][2];
}

void tela_concat(double a, double b, double c, double d, double e, double f)
{
    const double m[3][3] = {{a, c, e}, {b, d, f}, {0, 0, 1}};
    double product[3][3];
    mat3_mult(state().ctm, m, product);
    CTM_update(product);
}

void tela_translate(double tx, double ty)
{
    auto& ctm = state().ctm;
    ctm[0][2] += tx * ctm[0][0] + ty * ctm[0][1];
    ctm[1][2] += tx * ctm[1][0] + ty * ctm[1][1];
    CTM_inverse_is_valid = 0;
    path_invalidate_user_xy();
}

void tela_scale(double sx, double sy)
{
    tela_concat(sx, 0, 0, sy, 0, 0);
}

void tela_rotate(double degrees)
{
    const double x = norm_angle360(degrees) * RADIANS_PER_DEGREE;
    tela_concat(std::cos(x), std::sin(x), -std::sin(x), std::cos(x), 0, 0);
}

void CTM_update(const double m[3][3])
{
    std::memmove(state().ctm, m, sizeof(double) * 9);
    CTM_inverse_is_valid = 0;
    path_invalidate_user_xy();
}

void tela_setlinewidth(double width)
{
    state().lineWidth = width < 0.0 ? 0.0 : width;
}

double tela_currentlinewidth()
{
    return state().lineWidth;
}

void tela_setflatness(double flatness)
{
    state().flatness = flatness > MINIMUM_FLATNESS ? flatness : MINIMUM_FLATNESS;
}

double tela_currentflatness()
{
    return state().flatness;
}

const GStatePoint& gstate_user_to_device(double x, double y)
{
    GraphicsState& gs = state();
    mat3_project(gs.ctm, x, y, &gs.result.x, &gs.result.y);
    return gs.result;
}

const GStatePoint& gstate_user_to_device_vector(double dx, double dy)
{
    GraphicsState& gs = state();
    gs.result.x = gs.ctm[0][0] * dx + gs.ctm[0][1] * dy;
    gs.result.y = gs.ctm[1][0] * dx + gs.ctm[1][1] * dy;
    return gs.result;
}

const GStatePoint& gstate_device_to_user(double x, double y)
{
    GraphicsState& gs = state();
    mat3_project(inverse_ctm(), x, y, &gs.result.x, &gs.result.y);
    return gs.result;
}

const GStatePoint& gstate_device_to_user_vector(double dx, double dy)
{
    GraphicsState& gs = state();
    const auto& inverse = inverse_ctm();
    gs.result.x = inverse[0][0] * dx + inverse[0][1] * dy;
    gs.result.y = inverse[1][0] * dx + inverse[1][1] * dy;
    return gs.result;
}

const double (&gstate_ctm())[3][3]
{
    return state().ctm;
}

bool gstate_stack_holds_canvas(const Canvas* canvas)
{
    const GraphicsState& gs = state();
    const int used = gs.depth < STACK_SIZE ? gs.depth : STACK_SIZE;
    for (int i = 0; i < used; ++i)
        if (gs.stack[i].canvas == canvas)
            return true;
    return false;
}

void gstate_stack_replace_canvas(const Canvas* dead, Canvas* replacement)
{
    GraphicsState& gs = state();
    const int used = gs.depth < STACK_SIZE ? gs.depth : STACK_SIZE;
    for (int i = 0; i < used; ++i)
        if (gs.stack[i].canvas == dead)
            gs.stack[i].canvas = replacement;
}

int gstate_depth()
{
    return state().depth;
}

namespace Tela {

StateSaver::StateSaver()
{
    tela_gsave();
}

StateSaver::~StateSaver()
{
    tela_grestore();
}

} // namespace Tela
