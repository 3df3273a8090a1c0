#pragma once

#include <gtkmm/main.h>

#include <memory>

/// Starts the toolkit as the editor needs it: on X11, because places of the pointer are those of a window without a
/// decoration of its own, and without OpenGL, which draws nothing here and would take 50 MB. Called once.
std::unique_ptr<Gtk::Main> startToolkit(int& argc, char**& argv);
