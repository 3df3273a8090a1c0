#pragma once

#include <gtkmm/dialog.h>
#include <gtkmm/filechooserdialog.h>

#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// Answers the program's dialogs, in the order in which the answers were registered. A dialog that is unexpected or
/// does not appear fails the test.
class Answers {
public:
    Answers();
    ~Answers();
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;

    /// The question with this text.
    void question(const std::string& text, int response);

    /// In the chooser with this title, selects the folder and the file name and accepts them.
    void save(const std::filesystem::path& file);
    void open(const std::filesystem::path& file);
    void choose(const std::string& title, const std::filesystem::path& file);
    void press(const std::string& title, int response);

    /// Closes the dialog like the window manager.
    void close(const std::string& title);

    bool areAllGiven() const { return expected.empty(); }

private:
    struct Answer {
        std::string dialog;                      // text of a question, title of a chooser
        std::function<bool(Gtk::Dialog&)> give;  // false: not yet
    };

    void expect(const std::string& dialog, std::function<bool(Gtk::Dialog&)> give);
    bool look();
    void onResponse(int response);
    void giveUp(const std::string& why);

    std::deque<Answer> expected;
    Gtk::Dialog* answered = nullptr;  // its response is pending
    sigc::connection tick;
    sigc::connection response;
    std::chrono::steady_clock::time_point deadline;
};
