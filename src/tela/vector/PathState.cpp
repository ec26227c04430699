#include "tela/vector/PathState.h"

namespace {
bool s_user_valid = false;
} // namespace

void path_invalidate_user_xy()
{
    s_user_valid = false;
}

bool path_user_xy_valid()
{
    return s_user_valid;
}
