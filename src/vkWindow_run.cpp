#include "vkWindow.h"

#include <QzManager.h>

void vkWindow::setRun() {
    startButton.clicked();
}

void vkWindow::start_button_clicked() {
    if (!startButton.get_active()) {
        stopWorker();
        after_thread();
        return;
    }
    startButton.set_label("Stop");
    worker = Glib::Thread::create(sigc::mem_fun(*this, &vkWindow::run), true);
    // Deliberately once more for each start, and never taken back: a later call finds no thread to join.
    runFinished.connect(sigc::mem_fun(*this, &vkWindow::after_thread));
}

void vkWindow::run() {
    {
        const Glib::Mutex::Lock lock(runMutex);
        manager->Run();
    }
    runEnded.release();
    runFinished.emit();
}

void vkWindow::after_thread() {
    // The signal of a run that was stopped may come only when the next one is going on, which it must not wait for.
    if (worker && !runEnded.try_acquire()) {
        return;
    }
    joinWorker();
    // A button that was pressed in reports its release as a click, which comes here once more.
    startButton.set_active(false);
    startButton.set_label("Start");
}

void vkWindow::joinWorker() {
    if (worker) {
        worker->join();
    }
    worker = nullptr;
}

void vkWindow::stopWorker() {
    manager->Stop();
    if (!worker) {
        return;
    }
    runEnded.acquire();
    joinWorker();
    startButton.forgetWaitingClicks();
}

void vkWindow::reset_button_clicked() {
    manager->Reset();
}
