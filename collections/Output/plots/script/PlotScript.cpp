#include "Output/plots/script/PlotScript.h"

#include "Output/plots/contents/PlotContours.h"
#include "Output/plots/contents/PlotData.h"
#include "Output/plots/script/PlotLayers.h"
#include "Output/plots/text/LabelText.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <sstream>
#include <string_view>

namespace velmorak {

namespace {

/// Nine colours of viridis, whose lightness rises uniformly for every type of colour vision (S. van der Walt and
/// N. Smith).
constexpr std::array<std::string_view, 9> viridis = {"#440154", "#472D7B", "#3B528B", "#2C728E", "#21918C",
                                                     "#28AE80", "#5EC962", "#ADDC30", "#FDE725"};

std::string paletteText() {
    std::string text;
    for (std::size_t i = 0; i < viridis.size(); ++i) {
        text += (text.empty() ? "" : ", ") + std::to_string(i) + " '" + std::string(viridis[i]) + "'";
    }
    return "set palette defined (" + text + ")\n";
}

/// Of a PDF; the terminals size fonts and lines differently.
constexpr double pdfFontScale = 0.75;
constexpr double pdfLineWidth = 0.63;

constexpr const char* notAScript = "it is not the script of a picture";

constexpr const char* fontName = " font 'DejaVu Sans,";

/// @param scale of fonts and lines in the picture.
std::string fontOf(double scale) {
    return fontName + roundedText(PlotLayout{.scale = scale}.ticFont(), 4) + "'";
}

std::string marksOf(double factor) {
    return "marks = " + roundedText(factor, 4) + "\n";
}

/// Fonts are in points and lines in tenths of a millimetre of the paper.
std::string terminalOf(const std::string& format, const PlotStyle& style, double scale) {
    constexpr double cmPerInch = 2.54;
    constexpr double svgDpi = 96.0;
    constexpr double lineDpi = 254.0;
    const std::string font = fontOf(scale) + " rounded";
    const auto pixels = [&](double dpi) {
        return " size " + textOf(std::round(style.width / cmPerInch * dpi)) + "," +
               textOf(std::round(style.height / cmPerInch * dpi));
    };
    const auto width = [&](double factor) { return " linewidth " + roundedText(factor * scale, 4); };
    if (format == "png") {
        const double dots = style.dpi / lineDpi;
        return "set terminal pngcairo enhanced" + pixels(style.dpi) + " fontscale " + roundedText(style.dpi / svgDpi) +
               font + width(dots) + " dashlength 0.6\n" + marksOf(2.2 * dots * scale);
    }
    if (format == "svg") {
        return "set terminal svg enhanced" + pixels(svgDpi) + " fontscale 1.3333" + font + width(0.378) +
               " background rgb 'white'\n" + marksOf(0.66 * scale);
    }
    return "set terminal pdfcairo enhanced size " + textOf(style.width) + "cm," + textOf(style.height) +
           "cm fontscale " + roundedText(pdfFontScale) + font + width(pdfLineWidth) + " background rgb 'white'\n" +
           marksOf(pdfLineWidth * scale);
}

/// Lines below the picture.
std::string notesBelow(const std::vector<std::string>& notes, const PlotLayout& layout) {
    std::string text;
    for (std::size_t i = 0; i < notes.size(); ++i) {
        const double needed = labelWidth(notes[i]) * characterCm(layout.boxFont());
        const double fitting = std::min(1.0, 0.97 * layout.width / std::max(needed, 0.1));
        const double y = layout.screenY((static_cast<double>(notes.size() - i) - 0.4) * lineCm(layout.boxFont()));
        text += "set label " + quotedPlain(notes[i]) + " at screen " + roundedText(layout.screenX(0.5 * layout.width)) +
                ", screen " + roundedText(y) + " center textcolor rgb '#A00000' font '," +
                roundedText(layout.boxFont() * std::max(fitting, 0.5), 3) + "'\n";
    }
    return text;
}

constexpr const char* preamble =
    "# Draws the picture again: run gnuplot on this file in its folder.\n"
    "reset\n"
    "set encoding utf8\n";

/// Nothing of the frame before is left.
constexpr const char* nextFrame = "unset label\nunset arrow\nunset object\n";

std::string frameSettings(bool isMap, const PlotLayout& layout) {
    return std::string(
               "set border 31 linewidth 2.5 front\n"
               "set errorbars small\n"
               "set boxwidth 1\n"
               "set tics front ") +
           (isMap ? "out nomirror" : "in") + " scale " + (isMap ? "0.7,0.35" : "1,0.5") +
           "\n"
           "set lmargin at screen " +
           roundedText(layout.screenX(layout.left)) + "\nset rmargin at screen " +
           roundedText(layout.screenX(layout.width) - layout.right / layout.place.pageWidth) + "\n";
}

/// Lower and upper end of a frame, from below.
std::string frameEnds(double low, double high, const PlotLayout& layout) {
    return "set bmargin at screen " + roundedText(layout.screenY(low)) + "\nset tmargin at screen " +
           roundedText(layout.screenY(high)) + "\n";
}

std::string colourScale(const PlotPage& page, const PlotFrame& frame, const PlotStyle& style) {
    const PlotLayout& layout = page.layout;
    const double left = layout.left + layout.frameWidth() + 0.35 * layout.scale;
    return paletteText() + "set colorbox user origin screen " + roundedText(layout.screenX(left)) + ", screen " +
           roundedText(layout.screenY(layout.bottom)) + " size screen " +
           roundedText(0.45 * layout.scale / layout.place.pageWidth) + ", screen " +
           roundedText(layout.frameHeight() / layout.place.pageHeight) + "\n" +
           axisCommands("cb", frame.z, style.z.hasLog, page.z, true);
}

/// What the lower panel changes after the upper one is drawn.
std::string panelSettings(const PlotPanel& panel, const PlotPage& page, const PlotFrame& frame,
                          const PlotStyle& style) {
    const PlotLayout& layout = page.layout;
    const double middle = layout.screenY(layout.bottom + 0.5 * layout.panelHeight);
    return std::string(nextFrame) + "unset logscale y\nset key off\n" +
           frameEnds(layout.bottom, layout.bottom + layout.panelHeight, layout) + "set label " +
           quotedLabel(panel.title) + " at screen " + roundedText(layout.screenX(0.62 * lineCm(layout.titleFont()))) +
           ", screen " + roundedText(middle) + " center rotate by 90 font '," + roundedText(layout.titleFont(), 4) +
           "'\n" + axisCommands("x", frame.x, style.x.hasLog, page.x, true) +
           axisCommands("y", panel.span, false, page.panel, true) + guideCommands(style, false);
}

/// The commands of one frame, which may have a lower panel.
struct FrameScript {
    PlotLayout layout;
    SheetTitles titles;
    std::string start;     ///< Settings before those of the upper panel.
    std::string settings;  ///< Of the upper panel.
    std::string command;   ///< Draws both panels.
    bool hasPanel = false;
    PlotData data;
};

/// @param first number of the first block of its data.
FrameScript frameScript(PlotContents& contents, const PlotStyle& style, std::size_t first) {
    PlotFrame frame = frameOf(contents, style);
    traceContours(contents, frame, style);
    PlotBoxes boxes = boxesOf(contents, style, firstLayout(contents, style));
    placeBoxes(boxes, frame, contents, style);
    const PlotPanel panel = panelOf(contents, frame, style);
    const PlotPage page = pageOf(contents, frame, panel.span, style);
    const PlotLayout& layout = page.layout;
    FrameScript script{.layout = layout,
                       .titles = {.title = {},
                                  .x = horizontalTitle(contents, page, style),
                                  .y = firstNotEmpty(style.y.title, contents.yTitle)},
                       .start = frameSettings(contents.isPlane(), layout),
                       .settings = {},
                       .command = {},
                       .hasPanel = panel.isDrawn(),
                       .data = plotData(contents, frame, panel, first)};
    script.settings = frameEnds(layout.frameBottom(), layout.frameBottom() + layout.frameHeight(), layout) +
                      axisCommands("x", frame.x, style.x.hasLog, page.x, !panel.isDrawn()) +
                      axisCommands("y", frame.y, style.y.hasLog, page.y, true) + notesBelow(contents.notes, layout) +
                      titleLabels(contents, page, style, panel.title) + boxCommands(boxes, layout, style) +
                      guideCommands(style, true) +
                      (contents.isPlane() ? colourScale(page, frame, style) : std::string());
    script.command = contents.isPlane() ? mapCommand(contents, script.data, boxes, frame, style)
                                        : seriesCommand(contents, script.data, boxes, frame);
    if (panel.isDrawn()) {
        script.command += panelSettings(panel, page, frame, style) + panelCommand(contents, script.data, panel, frame);
    }
    return script;
}

/// The commands of a picture.
struct PictureScript {
    double scale = 1.0;    ///< Of fonts and lines.
    std::string settings;  ///< For all formats.
    std::string command;   ///< Draws with the settings.
    std::string data;
};

std::string several(const std::string& frames) {
    return "set multiplot\n" + frames + "unset multiplot\n" + nextFrame;
}

std::string dataFile(const PlotStyle& style) {
    return "data = " + quotedForGnuplot("./" + style.baseName + ".dat") + "\n";
}

PictureScript oneFrame(PlotContents& contents, const PlotStyle& style) {
    FrameScript script = frameScript(contents, style, 0);
    PictureScript picture{.scale = script.layout.scale,
                          .settings = preamble + script.start + dataFile(style),
                          .command = {},
                          .data = std::move(script.data.text)};
    if (script.hasPanel) {
        picture.command = several(script.settings + script.command);
    } else {
        picture.settings += script.settings;
        picture.command = script.command;
    }
    return picture;
}

/// All frames get the widest margin that one of them needs, so that they are aligned.
void align(PlotSheet& sheet) {
    double left = 0.0;
    for (const PlotSheet::Frame& frame : sheet.frames) {
        PlotContents trial = frame.contents;
        left = std::max(left, frameScript(trial, frame.style, 0).layout.left);
    }
    for (PlotSheet::Frame& frame : sheet.frames) {
        frame.style.place->left = left;
    }
}

PictureScript grid(PlotSheet& sheet, const PlotStyle& style) {
    align(sheet);
    PictureScript picture{.settings = preamble + dataFile(style), .command = {}, .data = {}};
    std::string frames;
    std::size_t blocks = 0;
    for (PlotSheet::Frame& frame : sheet.frames) {
        FrameScript script = frameScript(frame.contents, frame.style, blocks);
        frames += nextFrame;
        if (blocks == 0) {
            script.titles.title = sheet.title;
            picture.scale = script.layout.scale;
            frames += sheetLabels(script.titles, sheet.layout) + notesBelow(sheet.notes, sheet.layout);
        }
        frames += script.start + script.settings + script.command;
        blocks = script.data.end;
        picture.data += script.data.text;
    }
    picture.command = several(frames);
    return picture;
}

PictureScript pictureScript(PlotSheet& sheet, const PlotStyle& style) {
    return sheet.isGrid() ? grid(sheet, style) : oneFrame(sheet.frames.front().contents, sheet.frames.front().style);
}

}  // namespace

PlotFiles plotFiles(PlotSheet& sheet, const PlotStyle& style) {
    PictureScript picture = pictureScript(sheet, style);
    std::string text = picture.settings;
    for (const std::string& format : style.formats) {
        text += terminalOf(format, style, picture.scale) + "set output " +
                quotedForGnuplot("./" + style.baseName + "." + format) + "\n" + picture.command + "set output\n";
    }
    return {.script = text, .data = std::move(picture.data)};
}

std::string commandsIn(const std::string& script) {
    std::istringstream lines(script);
    std::string commands;
    bool isTerminal = false;
    for (std::string line; std::getline(lines, line);) {
        if (line == "set output") {
            return commands;  // Further formats repeat the command.
        }
        isTerminal = isTerminal || line.starts_with("set terminal ");
        if (isTerminal) {
            isTerminal = !line.starts_with("set output ");
        } else if (!line.starts_with("data = ")) {
            commands += line + "\n";
        }
    }
    throw Failure(notAScript);
}

double scaleIn(const std::string& script) {
    const std::size_t at = script.find(fontName);
    double font = 0.0;
    if (at != std::string::npos) {
        const char* const begin = script.data() + at + std::string_view(fontName).size();
        std::from_chars(begin, script.data() + script.size(), font);
    }
    if (!(font > 0.0)) {
        throw Failure(notAScript);
    }
    return font / PlotLayout{.scale = 1.0}.ticFont();
}

std::string pdfBegin(const std::string& file, const PlotStyle& style, double scale) {
    return terminalOf("pdf", style, scale) + "set output " + quotedForGnuplot("./" + file) + "\n";
}

std::string pageBegin(const std::string& dataFile, const PlotStyle& style, double scale, const PlotStyle& page) {
    const double fit = std::min(page.width / style.width, page.height / style.height);
    const double lines = pdfLineWidth * scale * fit;
    return "set termoption" + fontOf(scale) + "\nset termoption fontscale " + roundedText(pdfFontScale * fit) +
           "\nset termoption linewidth " + roundedText(lines, 4) + "\n" + marksOf(lines) +
           "data = " + quotedForGnuplot("./" + dataFile) + "\n";
}

}  // namespace velmorak
