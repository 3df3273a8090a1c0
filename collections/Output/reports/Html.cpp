#include "Html.h"

#include "Output/plots/text/PlotText.h"

#include <velmorak/Utf8.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace velmorak {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool isForbidden(const std::string& text, std::size_t at, std::size_t length) {
    const auto byte = static_cast<std::uint8_t>(text[at]);
    const bool isControl = length == 1 && ((byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F);
    // HTML does not allow U+0080 to U+009F, XML neither U+FFFE nor U+FFFF.
    const bool isHighControl = length == 2 && byte == 0xC2 && static_cast<std::uint8_t>(text[at + 1]) < 0xA0;
    const bool isNoCharacter =
        length == 3 && (text.compare(at, 3, "\xEF\xBF\xBE") == 0 || text.compare(at, 3, "\xEF\xBF\xBF") == 0);
    return length == 0 || isControl || isHighControl || isNoCharacter;
}

void replaceAll(std::string& text, std::string_view what, std::string_view by) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
}

void addPrefixBehind(std::string& tag, const std::string& quote, const std::string& prefix) {
    replaceAll(tag, " id=" + quote, " id=" + quote + prefix);
    replaceAll(tag, "xlink:href=" + quote + "#", "href=" + quote + "#" + prefix);
}

/// Adds the prefix to the ids in one tag.
std::string withPrefix(std::string tag, const std::string& prefix) {
    addPrefixBehind(tag, "'", prefix);
    addPrefixBehind(tag, "\"", prefix);
    replaceAll(tag, "url(#", "url(#" + prefix);
    return tag;
}

/// The opening svg tag without its pixel size and without namespace declarations, which HTML does not need.
std::string openingTag(const std::string& tag) {
    const std::size_t box = tag.find("viewBox=\"");
    const std::size_t end = box == std::string::npos ? box : tag.find('"', box + 9);
    return end == std::string::npos ? "<svg>" : "<svg " + tag.substr(box, end + 1 - box) + " role=\"img\">";
}

}  // namespace

std::string escaped(const std::string& text) {
    std::string safe;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = characterBytes(std::string_view(text).substr(i));
        if (isForbidden(text, i, length)) {
            safe += replacement;
        } else if (text[i] == '&') {
            safe += "&amp;";
        } else if (text[i] == '<') {
            safe += "&lt;";
        } else if (text[i] == '>') {
            safe += "&gt;";
        } else if (text[i] == '"') {
            safe += "&quot;";
        } else if (text[i] == '\'') {
            safe += "&#39;";
        } else {
            safe += text.substr(i, length);
        }
        i += std::max<std::size_t>(length, 1);
    }
    return safe;
}

std::string element(const std::string& tag, const std::string& text) {
    return "<" + tag + ">" + escaped(text) + "</" + tag + ">";
}

std::string htmlTable(const std::vector<std::string>& headings, const std::vector<std::vector<std::string>>& rows,
                      std::size_t firstNumber) {
    std::string text = "<div class=\"table\"><table>\n<thead><tr>";
    for (const std::string& heading : headings) {
        text += element("th", heading);
    }
    text += "</tr></thead>\n<tbody>\n";
    for (const auto& row : rows) {
        text += "<tr>";
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += (i >= firstNumber ? "<td class=\"number\">" : "<td>") + escaped(row[i]) + "</td>";
        }
        text += "</tr>\n";
    }
    return text + "</tbody>\n</table></div>\n";
}

std::string inlineSvg(const std::string& file, const std::string& prefix) {
    std::size_t at = file.find("<svg");
    // gnuplot's title and version do not describe the picture.
    const std::string_view lastWords = "</desc>";
    const std::size_t afterWords = file.find(lastWords);
    std::string text;
    bool isFirst = true;
    while (at != std::string::npos && at < file.size()) {
        const std::size_t end = file.find('>', at);
        if (end == std::string::npos) {
            break;
        }
        const std::string tag = file.substr(at, end + 1 - at);
        text += isFirst ? openingTag(tag) : withPrefix(tag, prefix);
        const bool hasWords = isFirst && afterWords != std::string::npos;
        const std::size_t next = std::min(file.find('<', hasWords ? afterWords + lastWords.size() : end), file.size());
        text += hasWords ? "\n" : file.substr(end + 1, next - end - 1);
        isFirst = false;
        at = next;
    }
    return text + "\n";
}

}  // namespace velmorak
