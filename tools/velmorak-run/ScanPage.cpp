#include "ScanPage.h"

#include "Markup.h"
#include "ScanPicture.h"

#include "run/record/WholeFile.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/Value.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t maxFilesOfRun = 12;
constexpr std::size_t maxPicturesOfRun = 3;
constexpr std::size_t maxRunsWithPictures = 100;

constexpr const char* style = R"(<style>
:root { color-scheme: light dark; --ink: #1c1e21; --ground: #fff; --line: #d3d7dc; --quiet: #585e66; --bad: #b3261e; }
@media (prefers-color-scheme: dark) { :root { --ink: #e6e8ea; --ground: #15181c; --line: #3a424b; --quiet: #a4abb3; --bad: #ff8a80; } }
body { font: 16px/1.45 "DejaVu Sans", sans-serif; margin: 1rem; color: var(--ink); background: var(--ground); }
.scroll { overflow-x: auto; }
svg { max-width: 100%; height: auto; }
table { border-collapse: collapse; font-size: 0.9rem; }
th, td { text-align: left; padding: 0.2rem 0.8rem; border-bottom: 1px solid var(--line); vertical-align: top; }
td.number { text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }
.failed, .stopped { color: var(--bad); font-weight: bold; }
.quiet { color: var(--quiet); }
.grid { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 20rem), 1fr)); gap: 1rem; }
figure { margin: 0; overflow-wrap: anywhere; } img { width: 100%; }
</style>
)";

std::string cell(const std::string& content, const char* kind = "") {
    return std::string("<td") + (*kind != '\0' ? std::string(" class=\"") + kind + "\"" : "") + ">" + content + "</td>";
}

std::string heading(const std::string& content) {
    return "<th scope=\"col\">" + markupText(content) + "</th>";
}

/// Few digits, which are enough to read; the table in the file has all.
std::string rounded(double value) {
    constexpr int digits = 6;
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, digits).ptr;
    velmorak::readNumber(std::string_view(text.data(), static_cast<std::size_t>(end - text.data())), value);
    return velmorak::formatNumber(value);
}

std::string shown(const ScanNumber& number) {
    return markupText(number.hasError ? velmorak::formatMeasurement(number.value, number.error)
                                      : rounded(number.value));
}

std::string linkTo(const std::string& path, const std::string& content) {
    return "<a href=\"" + markupText(relativeAddress(path)) + "\">" + content + "</a>";
}

/// Files in the folder of the run; others may be anywhere.
std::vector<std::string> filesOf(const ScanRun& run) {
    std::vector<std::string> files;
    std::copy_if(run.files.begin(), run.files.end(), std::back_inserter(files), [](const std::string& file) {
        const fs::path path = file;
        return path.is_relative() && std::find(path.begin(), path.end(), "..") == path.end();
    });
    return files;
}

std::string filesCell(const ScanRun& run) {
    const std::vector<std::string> files = filesOf(run);
    std::string content;
    for (std::size_t i = 0; i < std::min(files.size(), maxFilesOfRun); ++i) {
        content += (i > 0 ? ", " : "") + linkTo(run.folder + "/" + files[i], markupText(files[i]));
    }
    return cell(content + (files.size() > maxFilesOfRun ? ", ..." : ""));
}

std::string statusCell(const ScanRun& run) {
    const std::string reason = run.reason.empty() ? "" : ": " + markupText(run.reason);
    return cell(run.status + reason, run.status == "failed" || run.status == "stopped" ? run.status.c_str() : "");
}

std::string rowOf(const ScanTable::Quantities& quantities, const ScanRun& run) {
    double ignored = 0.0;
    std::string row = "<tr>";
    for (const std::string& value : run.values) {
        row += cell(markupText(value), velmorak::readNumber(value, ignored) ? "number" : "");
    }
    row += statusCell(run);
    for (const auto& [position, quantity] : quantities) {
        const auto found = run.numbers.find(position);
        row += cell(found == run.numbers.end() ? "" : shown(found->second), "number");
    }
    return row + filesCell(run) + "</tr>\n";
}

std::string mainTable(const ScanTable& table, const ScanTable::Quantities& quantities) {
    std::string text = "<div class=\"scroll\"><table>\n<thead><tr>";
    for (const std::string& name : table.varied()) {
        text += heading(name);
    }
    text += heading("status");
    for (const auto& [position, quantity] : quantities) {
        text += heading(quantity.name());
    }
    text += heading("files") + "</tr></thead>\n<tbody>\n";
    for (const ScanRun& run : table.runs()) {
        text += rowOf(quantities, run);
    }
    return text + "</tbody></table></div>\n";
}

/// Numbers that all runs agree on.
std::string commonTable(const ScanTable& table, const ScanTable::Quantities& changing) {
    std::string rows;
    for (const auto& [position, quantity] : table.quantities()) {
        if (quantity.isErrorOnly || changing.contains(position)) {
            continue;
        }
        const auto run =
            std::find_if(table.runs().begin(), table.runs().end(),
                         [position = position](const ScanRun& each) { return each.numbers.contains(position); });
        rows +=
            "<tr>" + cell(markupText(quantity.name())) + cell(shown(run->numbers.at(position)), "number") + "</tr>\n";
    }
    return rows.empty() ? ""
                        : "<h2>The same in every run</h2>\n<div class=\"scroll\"><table>\n" + rows + "</table></div>\n";
}

bool isPicture(const std::string& file) {
    const std::string ending = fs::path(file).extension().string();
    return ending == ".png" || ending == ".svg";
}

/// Pictures of the same name side by side.
std::string gallery(const ScanTable& table) {
    std::set<std::string> names;
    for (const ScanRun& run : table.runs()) {
        for (const std::string& file : filesOf(run)) {
            if (isPicture(file) && names.size() < maxPicturesOfRun) {
                names.insert(file);
            }
        }
    }
    std::string text;
    for (const std::string& name : names) {
        text += "<h2>" + markupText(name) + "</h2>\n<div class=\"grid\">\n";
        for (std::size_t i = 0; i < std::min(table.runs().size(), maxRunsWithPictures); ++i) {
            const ScanRun& run = table.runs()[i];
            if (std::find(run.files.begin(), run.files.end(), name) != run.files.end()) {
                const std::string address = markupText(relativeAddress(run.folder + "/" + name));
                text += fmt::format(
                    R"(<figure><figcaption>{}</figcaption><a href="{}"><img loading="lazy" src="{}" alt="{}">)",
                    markupText(run.folder), address, address, markupText(name));
                text += "</a></figure>\n";
            }
        }
        text += "</div>\n";
    }
    return text;
}

std::string countsOf(const ScanTable& table) {
    std::map<std::string, std::size_t> counts;
    for (const ScanRun& run : table.runs()) {
        ++counts[run.status];
    }
    std::string text = std::to_string(table.runs().size()) + (table.runs().size() == 1 ? " run" : " runs");
    for (const auto& [status, count] : counts) {
        text += ", " + std::to_string(count) + " " + status;
    }
    return text;
}

/// @return empty, or why the file cannot be written.
std::string writeFile(const fs::path& file, const std::string& text) {
    try {
        velmorak::replaceFile(file, text);
        return "";
    } catch (const std::system_error& error) {
        return "the table of the scan cannot be written to \"" + file.string() + "\": " + error.code().message();
    }
}

}  // namespace

std::string scanPage(const ScanTable& table, const std::string& document) {
    const ScanTable::Quantities changing = table.changing();
    const std::string name = document.empty() ? "pipeline" : fs::path(document).filename().string();
    const std::string title = "Scan of " + markupText(name);
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           title + "</title>\n" + style + "</head>\n<body>\n<h1>" + title + "</h1>\n<p class=\"quiet\">" +
           markupText(countsOf(table)) + ". All numbers: " + linkTo("scan.csv", "scan.csv") +
           ", the picture: " + linkTo("scan.svg", "scan.svg") + ".</p>\n" + scanPicture(table) +
           mainTable(table, changing) + commonTable(table, changing) + gallery(table) + "</body>\n</html>\n";
}

ScanFiles::ScanFiles(const ScanTable& table, std::string document, fs::path folder)
    : table(table), document(std::move(document)), folder(std::move(folder)) {
    write();
}

void ScanFiles::update() {
    constexpr std::chrono::seconds pause{1};
    if (std::chrono::steady_clock::now() - written >= pause) {
        write();
    }
}

bool ScanFiles::end() {
    write();
    if (complaint.empty()) {
        std::cerr << "Scan: table, picture and page are scan.csv, scan.svg and scan.html in " << folder.string()
                  << '\n';
    } else {
        std::cerr << "velmorak-run: " << complaint << '\n';
    }
    return complaint.empty();
}

void ScanFiles::write() {
    std::error_code error;
    fs::create_directories(folder, error);
    complaint = error ? "the folder \"" + folder.string() + "\" cannot be created: " + error.message() : "";
    for (const auto& [name, text] : {std::pair("scan.csv", table.csv()), std::pair("scan.svg", scanPicture(table)),
                                     std::pair("scan.html", scanPage(table, document))}) {
        complaint = complaint.empty() ? writeFile(folder / name, text) : complaint;
    }
    written = std::chrono::steady_clock::now();
}
