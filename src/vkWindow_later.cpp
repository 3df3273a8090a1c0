#include "vkWindow.h"

void vkWindow::checkOpen(const Glib::ustring& file) {
    open(file);
}
void vkWindow::open_call() {}
void vkWindow::save_call() {}
void vkWindow::saveas_call() {}
void vkWindow::on_imgexp() {}
void vkWindow::on_var() {}
bool vkWindow::start_draw(const ItemRef&, GdkEventButton*) {
    return false;
}
bool vkWindow::stop_draw(const ItemRef&, GdkEventButton*) {
    return false;
}
bool vkWindow::click_ip(const ItemRef&, GdkEventButton*) {
    return false;
}
bool vkWindow::pull_off(const Glib::ustring&) {
    return false;
}
void vkWindow::moveRubberBand() {}
