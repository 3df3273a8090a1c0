#include "PlotScript.h"

#include "LabelText.h"
#include "PlotContours.h"
#include "PlotData.h"
#include "PlotLayers.h"
#include "PlotText.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
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

std::string fontOf(const PlotStyle& style) {
    return " font 'DejaVu Sans," + roundedText(PlotLayout{.scale = scaleOf(style)}.ticFont(), 4) + "'";
}

std::string marksOf(double factor) {
    return "marks = " + roundedText(factor, 4) + "\n";
}

/// Fonts are in points and lines in tenths of a millimetre of the paper.
std::string terminalOf(const std::string& format, const PlotStyle& style) {
    constexpr double cmPerInch = 2.54;
    constexpr double svgDpi = 96.0;
    constexpr double lineDpi = 254.0;
    const double scale = scaleOf(style);
    const std::string font = fontOf(style) + " rounded";
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
        const double y = (static_cast<double>(notes.size() - i) - 0.4) * lineCm(layout.boxFont()) / layout.height;
        text += "set label " + quotedPlain(notes[i]) + " at screen 0.5, screen " + roundedText(y) +
                " center textcolor rgb '#A00000' font '," + roundedText(layout.boxFont() * std::max(fitting, 0.5), 3) +
                "'\n";
    }
    return text;
}

std::string preamble(bool isMap, const PlotLayout& layout) {
    return std::string(
               "# Draws the picture again: run gnuplot on this file in its folder.\n"
               "reset\n"
               "set encoding utf8\n"
               "set border 31 linewidth 2.5 front\n"
               "set errorbars small\n"
               "set boxwidth 1\n"
               "set tics front ") +
           (isMap ? "out nomirror" : "in") + " scale " + (isMap ? "0.7,0.35" : "1,0.5") +
           "\n"
           "set lmargin at screen " +
           roundedText(layout.left / layout.width) + "\nset rmargin at screen " +
           roundedText(1.0 - layout.right / layout.width) + "\n";
}

/// Lower and upper end of a frame, from below.
std::string frameEnds(double low, double high, const PlotLayout& layout) {
    return "set bmargin at screen " + roundedText(low / layout.height) + "\nset tmargin at screen " +
           roundedText(high / layout.height) + "\n";
}

std::string colourScale(const PlotPage& page, const PlotFrame& frame, const PlotStyle& style) {
    const PlotLayout& layout = page.layout;
    const double left = layout.left + layout.frameWidth() + 0.35 * layout.scale;
    return paletteText() + "set colorbox user origin screen " + roundedText(left / layout.width) + ", screen " +
           roundedText(layout.bottom / layout.height) + " size screen " +
           roundedText(0.45 * layout.scale / layout.width) + ", screen " +
           roundedText(layout.frameHeight() / layout.height) + "\n" +
           axisCommands("cb", frame.z, style.z.hasLog, page.z, true);
}

/// What the lower panel changes after the upper one is drawn.
std::string panelSettings(const PlotPanel& panel, const PlotPage& page, const PlotFrame& frame,
                          const PlotStyle& style) {
    const PlotLayout& layout = page.layout;
    const double middle = (layout.bottom + 0.5 * layout.panelHeight) / layout.height;
    return "unset label\nunset arrow\nunset object\nunset logscale y\nset key off\n" +
           frameEnds(layout.bottom, layout.bottom + layout.panelHeight, layout) + "set label " +
           quotedLabel(panel.title) + " at screen " + roundedText(0.62 * lineCm(layout.titleFont()) / layout.width) +
           ", screen " + roundedText(middle) + " center rotate by 90 font '," + roundedText(layout.titleFont(), 4) +
           "'\n" + axisCommands("x", frame.x, style.x.hasLog, page.x, true) +
           axisCommands("y", panel.span, false, page.panel, true) + guideCommands(style, false);
}

/// The commands of a picture.
struct PictureScript {
    std::string settings;  ///< For all formats.
    std::string command;   ///< Draws with the settings.
    std::string data;
};

PictureScript pictureScript(PlotContents& contents, const PlotStyle& style) {
    PlotFrame frame = frameOf(contents, style);
    traceContours(contents, frame, style);
    PlotBoxes boxes = boxesOf(contents, style, firstLayout(contents, style));
    placeBoxes(boxes, frame, contents, style);
    const PlotPanel panel = panelOf(contents, frame, style);
    const PlotPage page = pageOf(contents, frame, panel.span, style);
    PlotData data = plotData(contents, frame, panel);
    const PlotLayout& layout = page.layout;

    const std::string upper = frameEnds(layout.frameBottom(), layout.frameBottom() + layout.frameHeight(), layout) +
                              axisCommands("x", frame.x, style.x.hasLog, page.x, !panel.isDrawn()) +
                              axisCommands("y", frame.y, style.y.hasLog, page.y, true) +
                              notesBelow(contents.notes, layout) + titleLabels(contents, page, style, panel.title) +
                              boxCommands(boxes, layout, style) + guideCommands(style, true) +
                              (contents.isPlane() ? colourScale(page, frame, style) : std::string());
    const std::string command = contents.isPlane() ? mapCommand(contents, data, boxes, frame, style)
                                                   : seriesCommand(contents, data, boxes, frame);
    const std::string start =
        preamble(contents.isPlane(), layout) + "data = " + quotedForGnuplot("./" + style.baseName + ".dat") + "\n";
    if (!panel.isDrawn()) {
        return {.settings = start + upper, .command = command, .data = std::move(data.text)};
    }
    return {.settings = start,
            .command = "set multiplot\n" + upper + command + panelSettings(panel, page, frame, style) +
                       panelCommand(contents, data, panel, frame) +
                       "unset multiplot\nunset label\nunset arrow\nunset object\n",
            .data = std::move(data.text)};
}

}  // namespace

PlotFiles plotFiles(PlotContents& contents, const PlotStyle& style) {
    PictureScript picture = pictureScript(contents, style);
    std::string text = picture.settings;
    for (const std::string& format : style.formats) {
        text += terminalOf(format, style) + "set output " + quotedForGnuplot("./" + style.baseName + "." + format) +
                "\n" + picture.command + "set output\n";
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
    throw Failure("it is not the script of a picture");
}

std::string pdfBegin(const std::string& file, const PlotStyle& style) {
    return terminalOf("pdf", style) + "set output " + quotedForGnuplot("./" + file) + "\n";
}

std::string pageBegin(const std::string& dataFile, const PlotStyle& style, const PlotStyle& page) {
    const double fit = std::min(page.width / style.width, page.height / style.height);
    const double lines = pdfLineWidth * scaleOf(style) * fit;
    return "set termoption" + fontOf(style) + "\nset termoption fontscale " + roundedText(pdfFontScale * fit) +
           "\nset termoption linewidth " + roundedText(lines, 4) + "\n" + marksOf(lines) +
           "data = " + quotedForGnuplot("./" + dataFile) + "\n";
}

}  // namespace velmorak
