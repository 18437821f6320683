// SPDX-License-Identifier: MIT
#pragma once

#include <QProcessEnvironment>

// The environment the program was started with, before it set anything for
// itself (its font resolution, its scale). Programs it starts on the user's
// behalf (the desktop opener, and through it the user's viewer and file
// manager) get this one, so that nothing meant for this window reaches them.

// Keeps the current environment as the one to hand on; called first thing in
// main(). Later calls change nothing.
void rememberLaunchEnvironment();

// The remembered environment; the current one when nothing was remembered
// (a test that builds the window without main()).
QProcessEnvironment launchEnvironment();
