#include <velmorak/Dates.h>

#include <charconv>
#include <chrono>
#include <string>

namespace velmorak {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes a number of exactly so many digits from the text.
bool takeDigits(std::string_view& text, std::size_t digits, int& number) {
    if (text.size() < digits) {
        return false;
    }
    number = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        if (!isDigit(text[i])) {
            return false;
        }
        number = 10 * number + (text[i] - '0');
    }
    text.remove_prefix(digits);
    return true;
}

bool take(std::string_view& text, std::string_view any) {
    if (text.empty() || any.find(text.front()) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

bool takeDay(std::string_view& text, double& seconds) {
    int year = 0;
    int month = 0;
    int day = 0;
    if (!takeDigits(text, 4, year) || !take(text, "-") || !takeDigits(text, 2, month) || !take(text, "-") ||
        !takeDigits(text, 2, day)) {
        return false;
    }
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) {
        return false;
    }
    seconds = 86400.0 * static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count());
    return true;
}

/// Takes a second with its fraction. A minute may have a leap second.
bool takeSecond(std::string_view& text, double& second) {
    std::size_t length = 2;
    if (text.size() < 2 || !isDigit(text[0]) || !isDigit(text[1])) {
        return false;
    }
    if (text.size() > 3 && (text[2] == '.' || text[2] == ',') && isDigit(text[3])) {
        for (length = 3; length < text.size() && isDigit(text[length]); ++length) {
        }
    }
    std::string plain(text.substr(0, length));
    if (length > 2) {
        plain[2] = '.';
    }
    std::from_chars(plain.data(), plain.data() + plain.size(), second);
    text.remove_prefix(length);
    return second < 61.0;
}

bool takeTime(std::string_view& text, double& seconds) {
    int hour = 0;
    int minute = 0;
    double second = 0.0;
    if (!takeDigits(text, 2, hour) || !take(text, ":") || !takeDigits(text, 2, minute) || hour > 24 || minute > 59) {
        return false;
    }
    if (take(text, ":") && !takeSecond(text, second)) {
        return false;
    }
    seconds += 3600.0 * hour + 60.0 * minute + second;
    return hour < 24 || (minute == 0 && second == 0.0);
}

bool takeZone(std::string_view& text, double& seconds) {
    if (text.empty() || take(text, "Zz")) {
        return true;
    }
    const double sign = text.front() == '-' ? -1.0 : 1.0;
    int hour = 0;
    int minute = 0;
    if (!take(text, "+-") || !takeDigits(text, 2, hour) || hour > 23) {
        return false;
    }
    take(text, ":");
    if (!text.empty() && (!takeDigits(text, 2, minute) || minute > 59)) {
        return false;
    }
    seconds -= sign * (3600.0 * hour + 60.0 * minute);
    return true;
}

}  // namespace

bool readDate(std::string_view text, double& seconds) {
    double found = 0.0;
    if (!takeDay(text, found)) {
        return false;
    }
    if (!text.empty() && (!take(text, "Tt ") || !takeTime(text, found) || !takeZone(text, found))) {
        return false;
    }
    if (!text.empty()) {
        return false;
    }
    seconds = found;
    return true;
}

}  // namespace velmorak
