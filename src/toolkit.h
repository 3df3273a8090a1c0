#pragma once

#include <gtkmm/main.h>

#include <memory>

/// Initialises the toolkit, once: on X11, because the pointer's coordinates assume a window without client-side
/// decoration, and without OpenGL, which the editor does not use and which would take 50 MB.
std::unique_ptr<Gtk::Main> startToolkit(int& argc, char**& argv);
