#include "about.h"
#include "visible.h"

#include "question.h"

#include <gdkmm/pixbuf.h>
#include <glibmm/convert.h>
#include <gtkmm/aboutdialog.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

/// The first page of the documentation installed, or built, with this program.
Glib::ustring websiteAddress() {
    std::error_code failure;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto page = (program.parent_path() / VELMORAK_DOC_FROM_BIN / "index.html").lexically_normal();
    return page.is_absolute() ? Glib::filename_to_uri(page.string()) : Glib::ustring();
}

void setLogo(Gtk::AboutDialog& dialog) {
    const char* home = std::getenv("HOME");
    if (!home) {
        return;
    }
    const std::string file = std::string(home) + "/.VelmorakGtk/velko_lin.svg";
    if (!std::ifstream(file)) {
        return;
    }
    try {
        dialog.set_logo(Gdk::Pixbuf::create_from_file(file));
    } catch (const Glib::Error& failure) {
        std::cerr << "The logo " << visible(file) << " is not a picture: " << failure.what().raw() << std::endl;
    }
}

}  // namespace

void showAbout() {
    const KeepAboveSuspension suspension;
    Gtk::AboutDialog dialog;
    dialog.set_program_name("Velmorak(Gtk)");
    dialog.set_version("0.2");
    dialog.set_authors({"The Velmorak developers (editor)", "The Velmorak developers (analysis library)",
                        "The Velmorak developers (plug-ins and documentation)"});
    dialog.set_comments(
        "A graphical analyzer for physical data. This program uses Open Scientist that needs to be installed "
        "separately, at least version 16.10.");
    dialog.set_website(websiteAddress());
    dialog.set_website_label("Velmorak Website");
    // Otherwise the toolkit shows its icon for a missing image.
    gtk_about_dialog_set_logo_icon_name(dialog.gobj(), nullptr);
    setLogo(dialog);
    dialog.run();
}
