#pragma once

#include <cstdint>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace recording {

/// Every call in order. Threads: any.
class Journal {
public:
    static Journal& instance();

    /// @param edit false for a call that only reads.
    template <typename... Arguments>
    void note(bool edit, const std::string& operation, const Arguments&... arguments) {
        std::ostringstream text;
        text.imbue(std::locale::classic());
        [[maybe_unused]] const char* separator = "";
        ((text << separator << arguments, separator = ", "), ...);
        add({operation, operation + '(' + text.str() + ')', edit});
    }

    std::vector<std::string> texts(bool onlyEdits, const std::string& operation);
    void forget();

private:
    struct Entry {
        std::string operation;  ///< Prefixed with the plug-in's name and a dot.
        std::string text;
        bool edit;
    };

    Journal();
    void add(Entry entry);

    std::mutex mutex;
    std::vector<Entry> entries;
    std::thread::id mainThread = std::this_thread::get_id();
    std::ofstream log;
};

}  // namespace recording
