#include "Answers.h"

#include <glibmm/main.h>
#include <gtest/gtest.h>
#include <gtkmm/messagedialog.h>

namespace {

constexpr auto patience = std::chrono::seconds(60);

std::string nameOf(Gtk::Dialog& dialog) {
    const auto* question = dynamic_cast<Gtk::MessageDialog*>(&dialog);
    return question ? question->property_text().get_value() : dialog.get_title();
}

std::vector<Gtk::Dialog*> shownDialogs() {
    std::vector<Gtk::Dialog*> dialogs;
    for (Gtk::Window* window : Gtk::Window::list_toplevels()) {
        auto* dialog = dynamic_cast<Gtk::Dialog*>(window);
        if (dialog && dialog->is_visible()) {
            dialogs.push_back(dialog);
        }
    }
    return dialogs;
}

}  // namespace

Answers::Answers() : deadline(std::chrono::steady_clock::now() + patience) {
    tick = Glib::signal_timeout().connect(sigc::mem_fun(*this, &Answers::look), 1);
}

Answers::~Answers() {
    tick.disconnect();
    response.disconnect();
    for (const Answer& answer : expected) {
        ADD_FAILURE() << "did not appear: " << answer.dialog;
    }
}

void Answers::expect(const std::string& dialog, std::function<bool(Gtk::Dialog&)> give) {
    expected.push_back({dialog, std::move(give)});
}

void Answers::question(const std::string& text, int code) {
    press(text, code);
}

void Answers::press(const std::string& title, int code) {
    expect(title, [code](Gtk::Dialog& dialog) {
        dialog.response(code);
        return true;
    });
}

void Answers::close(const std::string& title) {
    expect(title, [](Gtk::Dialog& dialog) {
        dialog.close();
        return true;
    });
}

void Answers::save(const std::filesystem::path& file) {
    choose("Save as", file);
}

void Answers::open(const std::filesystem::path& file) {
    choose("Open", file);
}

void Answers::choose(const std::string& title, const std::filesystem::path& file) {
    expect(title, [file, isTyped = false](Gtk::Dialog& dialog) mutable {
        auto& chooser = dynamic_cast<Gtk::FileChooserDialog&>(dialog);
        if (!isTyped && chooser.get_action() == Gtk::FILE_CHOOSER_ACTION_OPEN) {
            chooser.set_filename(file.string());
        } else if (!isTyped) {
            chooser.set_current_folder(file.parent_path().string());
            chooser.set_current_name(file.filename().string());
        }
        isTyped = true;
        if (chooser.get_filename() != file.string()) {
            return false;  // the chooser is still reading the folder
        }
        dialog.response(Gtk::RESPONSE_OK);
        return true;
    });
}

bool Answers::look() {
    if (std::chrono::steady_clock::now() > deadline) {
        giveUp(expected.empty() ? "nothing" : expected.front().dialog);
        return true;
    }
    if (answered) {
        return true;
    }
    for (Gtk::Dialog* dialog : shownDialogs()) {
        if (expected.empty()) {
            giveUp("nothing");
            return true;
        }
        if (nameOf(*dialog) == expected.front().dialog) {
            response.disconnect();
            response = dialog->signal_response().connect(sigc::mem_fun(*this, &Answers::onResponse));
            answered = dialog;
            Answer& answer = expected.front();
            if (!answer.give(*dialog)) {
                answered = nullptr;
            }
            return true;
        }
    }
    return true;
}

void Answers::onResponse(int) {
    answered = nullptr;
    response.disconnect();
    expected.pop_front();
    deadline = std::chrono::steady_clock::now() + patience;
}

// Closes all dialogs, so that the test can continue.
void Answers::giveUp(const std::string& why) {
    expected.clear();
    response.disconnect();
    answered = nullptr;
    for (Gtk::Dialog* dialog : shownDialogs()) {
        ADD_FAILURE() << "expected: " << why << ", shown: " << nameOf(*dialog);
        dialog->response(Gtk::RESPONSE_CANCEL);
    }
}
