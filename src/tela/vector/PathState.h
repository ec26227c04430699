#pragma once
// The path builder's cached user-space current point. Any change of the
// matrix makes it stale, since it was computed through the old inverse.

void path_invalidate_user_xy();
bool path_user_xy_valid();
