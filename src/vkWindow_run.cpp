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
    // Deliberate: connected again for each start and never disconnected; further calls find no thread to join.
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
    // The signal of a stopped run may arrive during the next run, and must not wait for that.
    if (worker && !runEnded.try_acquire()) {
        return;
    }
    joinWorker();
    // Releasing the button reports a click, which calls this function again.
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
    startButton.discardPendingClicks();
}

void vkWindow::reset_button_clicked() {
    manager->Reset();
}
