#include "vkWindow.h"

void vkWindow::checkOpen(const Glib::ustring& file) {
    open(file);
}
void vkWindow::open_call() {}
void vkWindow::save_call() {}
void vkWindow::saveas_call() {}
void vkWindow::on_imgexp() {}
void vkWindow::on_var() {}
