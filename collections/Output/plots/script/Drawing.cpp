#include "Output/plots/script/Drawing.h"

#include "Output/plots/script/Gnuplot.h"

#include <velmorak/Failure.h>
#include <velmorak/SystemReason.h>
#include <velmorak/TemporaryFolder.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string_view>
#include <utility>

namespace velmorak {

namespace {

void writeText(const std::filesystem::path& file, const std::string& text) {
    errno = 0;
    std::ofstream out(file, std::ios::binary);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out) {
        throw Failure(file.string() + " cannot be written" + systemReason(errno));
    }
}

std::string readText(const std::filesystem::path& file) {
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in) {
        throw Failure(file.string() + " cannot be read" + systemReason(errno));
    }
    return text.str();
}

/// A PDF records its creation date. To give the same bytes for the same objects, the date is replaced by a fixed one of
/// the same length, so that offsets in the file stay valid.
void takeDateFrom(const std::filesystem::path& pdf) {
    constexpr std::string_view mark = "/CreationDate (D:";
    constexpr std::string_view date = "20000101000000";
    std::string text = readText(pdf);
    const std::size_t at = text.find(mark);
    if (at == std::string::npos || at + mark.size() + date.size() > text.size()) {
        return;
    }
    text.replace(at + mark.size(), date.size(), date);
    // The time zone follows: +01'00 for example, or Z00'00.
    for (std::size_t i = at + mark.size() + date.size(); i < text.size() && text[i] != ')'; ++i) {
        if (text[i] >= '1' && text[i] <= '9') {
            text[i] = '0';
        }
    }
    writeText(pdf, text);
}

}  // namespace

void drawInto(const std::filesystem::path& folder, const PlotFiles& files, const PlotStyle& style,
              const RunContext& context) {
    writeText(folder / (style.baseName + ".dat"), files.data);
    writeText(folder / (style.baseName + ".gp"), files.script);
    runGnuplot(folder, "./" + style.baseName + ".gp", context);
    if (std::find(style.formats.begin(), style.formats.end(), "pdf") != style.formats.end()) {
        takeDateFrom(folder / (style.baseName + ".pdf"));
    }
}

std::string drawnSvg(const PlotPicture& picture, RunContext& context) {
    PlotStyle style = picture.style;
    style.baseName = "picture";
    style.formats = {"svg"};
    PlotSheet sheet = plotSheet(picture.objects, style);
    const PlotFiles files = plotFiles(sheet, style);
    for (const std::string& warning : sheet.warnings()) {
        context.warn(warning);
    }
    const TemporaryFolder scratch("plot");
    drawInto(scratch.path(), files, style, context);
    return readText(scratch.path() / "picture.svg");
}

PdfPage pdfPageOf(const PlotPicture& picture) {
    PlotStyle style = picture.style;
    style.baseName = "page";
    style.formats = {"pdf"};
    PlotSheet sheet = plotSheet(picture.objects, style);
    PlotFiles files = plotFiles(sheet, style);
    return {.commands = commandsIn(files.script),
            .data = std::move(files.data),
            .style = std::move(style),
            .scale = scaleIn(files.script)};
}

PdfPage pdfPageOf(const std::filesystem::path& files, const PlotStyle& style) {
    const std::string script = readText(files.string() + ".gp");
    std::string data = readText(files.string() + ".dat");
    try {
        return {.commands = commandsIn(script), .data = std::move(data), .style = style, .scale = scaleIn(script)};
    } catch (const Failure& failure) {
        throw Failure(files.string() + ".gp cannot be drawn: " + failure.what());
    }
}

std::string drawnPdf(const std::vector<PdfPage>& pages, const RunContext& context) {
    const TemporaryFolder scratch("plot");
    const PlotStyle& size = pages.front().style;
    std::string script = pdfBegin("pages.pdf", size, pages.front().scale);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::string data = "page" + std::to_string(i + 1) + ".dat";
        script += pageBegin(data, pages[i].style, pages[i].scale, size) + pages[i].commands;
        writeText(scratch.path() / data, pages[i].data);
    }
    writeText(scratch.path() / "pages.gp", script + "set output\n");
    runGnuplot(scratch.path(), "./pages.gp", context);
    takeDateFrom(scratch.path() / "pages.pdf");
    return readText(scratch.path() / "pages.pdf");
}

}  // namespace velmorak
