#include "ReportPage.h"

#include "Html.h"
#include "Output/FitNotes.h"
#include "Output/plots/text/PlotText.h"
#include "PipelineDrawing.h"

#include <velmorak/DataObjects.h>
#include <velmorak/FormatMeasurement.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string_view>

namespace velmorak {

namespace {

using Rows = std::vector<std::vector<std::string>>;

constexpr const char* styleSheet =
    "body { font-family: 'DejaVu Sans', Helvetica, Arial, sans-serif; line-height: 1.45; color: #202020;\n"
    "       max-width: 1100px; margin: 2em auto; padding: 0 1em; }\n"
    "h1 { font-size: 1.9em; margin-bottom: 0.2em; }\n"
    "h2 { font-size: 1.35em; margin-top: 1.8em; border-bottom: 1px solid #C0C0C0; }\n"
    "h3 { font-size: 1.05em; }\n"
    "table { border-collapse: collapse; margin: 0.6em 0; }\n"
    "th, td { padding: 0.2em 0.8em; text-align: left; vertical-align: top; border-bottom: 1px solid #E0E0E0; }\n"
    "th { border-bottom: 2px solid #404040; }\n"
    "td.number { text-align: right; font-variant-numeric: tabular-nums; }\n"
    "pre, code { font-family: 'DejaVu Sans Mono', monospace; font-size: 0.9em; overflow-wrap: anywhere; }\n"
    "pre { white-space: pre-wrap; background: #F4F4F4; padding: 0.6em; }\n"
    "figure { margin: 1em 0; }\n"
    "svg { width: 100%; height: auto; }\n"
    "nav ul { padding-left: 1.2em; columns: 14em; }\n"
    "summary { cursor: pointer; font-weight: bold; margin: 0.6em 0 0.2em; }\n"
    ".table { overflow-x: auto; }\n"
    "td, th, p, h1, h2, h3, summary, figcaption { overflow-wrap: anywhere; }\n"
    "@media (max-width: 700px) { body { margin: 0.6em auto; padding: 0 0.6em; } th, td { padding: 0.2em 0.4em; } }\n"
    ".failed { color: #A00000; font-weight: bold; }\n"
    ".quiet { color: #505050; }\n";

std::string nameOf(const ReportItem& item) {
    return item.plugin + " " + item.output;
}

std::string stateText(RecordedState state) {
    switch (state) {
        case RecordedState::Done:
            return "done";
        case RecordedState::Failed:
            return "failed";
        case RecordedState::NotRun:
            return "not run";
        case RecordedState::Unfinished:
            return "not finished";
        case RecordedState::NotRequested:
            break;
    }
    return "not requested";
}

bool isMissing(RecordedState state) {
    return state == RecordedState::Failed || state == RecordedState::NotRun || state == RecordedState::Unfinished;
}

std::string head(const ReportContents& contents) {
    const RunRecord& record = contents.record;
    std::string text = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n";
    text += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n";
    text += element("title", contents.title) + "\n<style>\n" + styleSheet + "</style>\n</head>\n<body>\n";
    text += element("h1", contents.title) + "\n<p class=\"quiet\">";
    if (!record.document.empty()) {
        text += "Document " + element("code", record.document) + ", ";
    }
    text += "analysis library " + escaped(record.program) + ", written on " + escaped(contents.date) + "</p>\n";
    if (!contents.comment.empty()) {
        text += element("p", contents.comment) + "\n";
    }
    return text;
}

/// Files of an earlier run that this one did not make again.
std::string formerFiles(const RunRecord& record) {
    if (record.former.empty()) {
        return {};
    }
    Rows rows;
    for (const FormerFile& file : record.former) {
        rows.push_back({file.file, file.plugin});
    }
    return "<p>This run did not make these files; those of an earlier run are in the folder "
           "<code>former</code>.</p>\n" +
           htmlTable({"file", "plug-in"}, rows);
}

std::string failures(const ReportContents& contents) {
    std::string text = "<h2>Failures</h2>\n";
    Rows rows;
    for (const RecordedPlugin& plugin : contents.record.plugins) {
        if (isMissing(plugin.state)) {
            rows.push_back({plugin.name, plugin.kind, stateText(plugin.state), plugin.sentence});
        }
    }
    if (rows.empty()) {
        return text + "<p>None: every requested plug-in succeeded.</p>\n" + formerFiles(contents.record);
    }
    text += "<p class=\"failed\">" + std::to_string(rows.size()) + " of " +
            std::to_string(contents.record.plugins.size()) + " plug-ins gave no result.</p>\n";
    text += htmlTable({"plug-in", "kind", "state", "reason"}, rows);
    for (const ReportItem& item : contents.items) {
        if (std::holds_alternative<std::monostate>(item.value)) {
            text += element("p", "Missing in this report: " + nameOf(item) + ".") + "\n";
        }
    }
    return text + formerFiles(contents.record);
}

std::string pictures(const ReportContents& contents) {
    std::string text;
    std::size_t number = 0;
    for (const ReportPicture& picture : contents.pictures) {
        text += number++ == 0 ? "<h2>Pictures</h2>\n" : "";
        text += "<figure>\n" + element("figcaption", picture.heading) + "\n";
        if (picture.svg.empty()) {
            text += "<p class=\"failed\">" + escaped("It cannot be drawn: " + picture.sentence) + "</p>\n";
        } else {
            text += inlineSvg(picture.svg, "p" + std::to_string(number) + "-");
        }
        text += "</figure>\n";
    }
    return text;
}

std::string numbers(const ReportContents& contents) {
    Rows rows;
    for (const ReportItem& item : contents.items) {
        if (const std::optional<NumberWithError> number = numberIn(item.value)) {
            rows.push_back({item.plugin, item.output, formatMeasurement(number->value(), number->error())});
        }
    }
    return rows.empty() ? "" : "<h2>Numbers</h2>\n" + htmlTable({"plug-in", "output", "value"}, rows, 2);
}

std::vector<std::string> splitAt(const std::string& text, char mark) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, mark);) {
        parts.push_back(part);
    }
    return parts;
}

/// Lines with the same number of tabs are a table, such as a cut flow; the first line has the headings.
std::string tableOrText(const std::string& text) {
    Rows rows;
    for (const std::string& line : splitAt(text, '\n')) {
        rows.push_back(splitAt(line, '\t'));
    }
    const bool isTable =
        rows.size() >= 2 && rows.front().size() >= 2 &&
        std::all_of(rows.begin(), rows.end(), [&](const auto& row) { return row.size() == rows.front().size(); });
    if (!isTable) {
        return element("pre", text) + "\n";
    }
    return htmlTable(rows.front(), Rows(rows.begin() + 1, rows.end()), 1);
}

std::string texts(const ReportContents& contents) {
    std::string text;
    for (const ReportItem& item : contents.items) {
        if (const auto* words = std::get_if<std::string>(&item.value)) {
            text += (text.empty() ? "<h2>Texts and tables</h2>\n" : "") + element("h3", nameOf(item)) + "\n" +
                    tableOrText(*words);
        }
    }
    return text;
}

std::string noteOf(const FunctionObject& function, const std::string& key) {
    for (const AnnotationItem& item : function.annotation) {
        if (item.key == key) {
            return item.value;
        }
    }
    return {};
}

std::string fitText(const ReportItem& item, const FunctionObject& function) {
    const FitNotes notes = fitNotesOf(function);
    std::string text = element("h3", function.title.empty() ? nameOf(item) : function.title) + "\n";
    Rows rows;
    for (std::size_t i = 0; i < function.parameters.size(); ++i) {
        rows.push_back({function.parameters[i].name,
                        formatMeasurement(function.parameters[i].value, notes.errors[i].value_or(0.0))});
    }
    text += htmlTable({"parameter", "value"}, rows, 1);
    Rows quality;
    if (notes.chi2 && notes.ndf) {
        quality.push_back({"χ²/ndf", roundedText(*notes.chi2) + " / " + formatNumber(*notes.ndf)});
    }
    if (notes.pValue) {
        quality.push_back({"p-value", roundedText(*notes.pValue)});
    }
    for (const std::string key : {"model", "method", "status"}) {
        if (const std::string value = noteOf(function, key); !value.empty()) {
            quality.push_back({key, value});
        }
    }
    return text + (quality.empty() ? "" : htmlTable({"fit", ""}, quality));
}

std::string fits(const ReportContents& contents) {
    std::string text;
    for (const ReportItem& item : contents.items) {
        const auto* object = std::get_if<DataObjectPtr>(&item.value);
        if (!object) {
            continue;
        }
        visit(**object, overloaded{
                            [&](const FunctionObject& function) {
                                text += (text.empty() ? "<h2>Functions and fits</h2>\n" : "") + fitText(item, function);
                            },
                            [](const DataObject&) {},
                        });
    }
    return text;
}

std::string valuesOf(const RecordedPlugin& plugin) {
    Rows rows;
    for (const RecordedInput& input : plugin.inputs) {
        if (!input.plugin.empty()) {
            rows.push_back({input.name, "from " + input.plugin + " " + input.output});
        } else if (!input.value.empty()) {
            rows.push_back({input.name, input.value});
        }
    }
    std::string text = "<details>\n<summary>" + escaped(plugin.name) + " <span class=\"quiet\">" +
                       escaped(plugin.kind + ", version " + textOf(plugin.version) + ", " + stateText(plugin.state)) +
                       "</span></summary>\n";
    return text + (rows.empty() ? "<p>No values.</p>\n" : htmlTable({"input", "value"}, rows)) + "</details>\n";
}

std::string seeds(const RunRecord& record) {
    Rows rows;
    for (const RecordedPlugin& plugin : record.plugins) {
        for (const RecordedInput& input : plugin.inputs) {
            if (input.isSeed) {
                rows.push_back({plugin.name, input.plugin.empty() ? input.value : "from " + input.plugin});
            }
        }
    }
    return rows.empty() ? "" : "<h3>Seeds</h3>\n" + htmlTable({"plug-in", "seed"}, rows, 1);
}

std::string origin(const ReportContents& contents) {
    const RunRecord& record = contents.record;
    std::string text = "<h2>Where everything came from</h2>\n";
    Rows rows;
    if (!record.document.empty()) {
        rows.push_back({"document", record.document});
    }
    rows.push_back({"SHA-256 of the document as it was run", record.documentSha256});
    rows.push_back({"analysis library", record.program});
    text += htmlTable({"what", ""}, rows);
    Rows files;
    for (const RecordedFile& file : record.files) {
        files.push_back({file.name.empty() ? "AIDA file of the command line" : file.name, std::to_string(file.bytes),
                         file.sha256.empty() ? "cannot be read any more" : file.sha256});
    }
    if (!files.empty()) {
        text += "<h3>Files that were read</h3>\n" + htmlTable({"file", "bytes", "SHA-256"}, files);
    }
    Rows skipped;
    for (const SkippedFile& file : record.skipped) {
        if (file.file.empty()) {
            text += "<p><strong>Partial:</strong> the results lack rows, because " + escaped(file.reason) + ".</p>\n";
            continue;
        }
        skipped.push_back({file.file, file.plugin, file.reason});
    }
    if (!skipped.empty()) {
        text += "<h3>Damaged files that were skipped</h3>\n" + htmlTable({"file", "plug-in", "reason"}, skipped);
    }
    text += seeds(record) + "<h3>Values of all plug-ins</h3>\n";
    for (const RecordedPlugin& plugin : record.plugins) {
        text += valuesOf(plugin);
    }
    return text;
}

/// @return the sections with ids, below a list of them.
std::string withContents(const std::string& body) {
    constexpr std::string_view open = "<h2>";
    constexpr std::string_view close = "</h2>";
    std::string list;
    std::string text;
    std::size_t done = 0;
    std::size_t count = 0;
    for (std::size_t at = body.find(open); at != std::string::npos; at = body.find(open, done)) {
        const std::string id = "section-" + std::to_string(++count);
        const std::size_t begin = at + open.size();
        const std::string heading = body.substr(begin, body.find(close, begin) - begin);
        text.append(body, done, at - done).append("<h2 id=\"").append(id).append("\">");
        list.append("<li><a href=\"#").append(id).append("\">").append(heading).append("</a></li>\n");
        done = begin;
    }
    return "<nav>\n<ul>\n" + list + "</ul>\n</nav>\n" + text + body.substr(done);
}

}  // namespace

std::string reportPage(const ReportContents& contents) {
    std::string body = failures(contents);
    if (const std::string drawing = drawnPipeline(contents.record); !drawing.empty()) {
        body += "<h2>Pipeline</h2>\n<figure>\n" + drawing + "</figure>\n";
    }
    body += pictures(contents) + fits(contents) + numbers(contents) + texts(contents) + origin(contents);
    return head(contents) + withContents(body) + "</body>\n</html>\n";
}

}  // namespace velmorak
