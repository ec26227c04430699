#pragma once
// The root window's placement kept between runs: size, position, title bar
// and maximised state, as one JSON text in the preferences under
// "<application name> : Window". An older form of separate keys is still
// read when the current key has nothing.

// RootWindowEventHandler::restoreWindowState gives the arguments to make the
// window with, from what was stored. A stored size is raised to at least
// 1024 x 768; a maximised window too big for the monitor it was on (or for
// the primary one, when that monitor is gone) is given nine tenths of the
// monitor, centred. A text that does not parse gives the defaults, with the
// application's name as the window's name.

namespace Tela {

// Stores the first root's placement. A window without a title bar, or a
// maximised one, keeps the normal placement stored before.
void saveRootWindowPlacement();

} // namespace Tela
