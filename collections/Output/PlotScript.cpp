#include "PlotScript.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace velmorak {

namespace {

/// M. Okabe and K. Ito's colours that people with any colour vision tell apart, dark ones first.
constexpr std::array<std::string_view, 7> colours = {"#0072B2", "#D55E00", "#009E73", "#CC79A7",
                                                     "#000000", "#E69F00", "#56B4E9"};

std::string colourOf(std::size_t position) {
    return "'" + std::string(colours[position % colours.size()]) + "'";
}

/// Solid lines first; the colours come again dashed.
std::string dashOf(std::size_t position) {
    const std::size_t turn = position / colours.size();
    return textOf(static_cast<double>(turn + 1));
}

std::string inFrame(double y, const PlotFrame& frame) {
    return std::isnan(y) ? "NaN" : textOf(std::clamp(y, frame.yLow, frame.yHigh));
}

std::string line(std::initializer_list<std::string> words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text + "\n";
}

std::string outline(const Histogram1D& histogram, const PlotFrame& frame, double ground) {
    const std::vector<double>& edges = histogram.axis().edges();
    std::string text = line({textOf(edges.front()), inFrame(ground, frame)});
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        const std::string height = inFrame(histogram.height(i), frame);
        text += line({textOf(edges[i]), height});
        text += line({textOf(edges[i + 1]), height});
    }
    return text + line({textOf(edges.back()), inFrame(ground, frame)});
}

std::string errorBars(const Histogram1D& histogram, const PlotFrame& frame) {
    std::string text = "NaN NaN NaN NaN\n";
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        const double height = histogram.height(i);
        const double error = histogram.error(i);
        if (error > 0.0 && height >= frame.yLow && height <= frame.yHigh)
            text += line({textOf(histogram.axis().center(i)), textOf(height), inFrame(height - error, frame),
                          inFrame(height + error, frame)});
    }
    return text;
}

/// Long titles are set smaller, so that they stay in the picture.
std::string titleSize(const std::string& title) {
    const double fitting = 1500.0 / std::max<double>(1.0, static_cast<double>(title.size()));
    return textOf(std::floor(std::clamp(fitting, 12.0, 30.0)));
}

std::string nameOfHistogram(const Histogram1D& histogram) {
    return histogram.title.empty() ? histogram.name : histogram.title;
}

std::string entriesText(const Histogram1D& histogram) {
    return textOf(static_cast<double>(histogram.inRange().entries));
}

/// The box at the upper right; for several histograms the numbers stand in the legend instead.
std::string statisticsBox(const Histogram1D& histogram) {
    std::vector<std::array<std::string, 2>> rows = {{"Entries", entriesText(histogram)},
                                                    {"Mean", roundedText(histogram.mean())},
                                                    {"RMS", roundedText(histogram.rms())}};
    if (histogram.underflow().entries > 0)
        rows.push_back({"Underflow", roundedText(histogram.underflow().w)});
    if (histogram.overflow().entries > 0)
        rows.push_back({"Overflow", roundedText(histogram.overflow().w)});
    const double height = 0.02 + 0.05 * static_cast<double>(rows.size());
    std::string text = "set object 1 rectangle from graph 0.72, " + textOf(0.97 - height) +
                       " to graph 0.98, 0.97 front fillcolor rgb 'white' fillstyle solid border linecolor rgb "
                       "'#808080' linewidth 1.5\n";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string y = roundedText(0.97 - 0.035 - 0.05 * static_cast<double>(i));
        text += "set label " + quotedForGnuplot(rows[i][0]) + " at graph 0.735, " + y + " left front\n";
        text += "set label " + quotedForGnuplot(rows[i][1]) + " at graph 0.967, " + y + " right front\n";
    }
    return text;
}

std::string axes(const PlotFrame& frame, const PlotStyle& style) {
    std::string text;
    if (style.hasLogX)
        text += "set logscale x\n";
    if (style.hasLogY)
        text += "set logscale y\n";
    text += "set xrange [" + textOf(frame.xLow) + ":" + textOf(frame.xHigh) + "]\n";
    text += "set yrange [" + textOf(frame.yLow) + ":" + textOf(frame.yHigh) + "]\n";
    text += "set title " + quotedForGnuplot(style.title) + " font 'DejaVu Sans," + titleSize(style.title) + "'\n";
    text += "set xlabel " + quotedForGnuplot(style.xLabel) + " offset 0,0.2\n";
    text += "set ylabel " + quotedForGnuplot(style.yLabel) + " offset -0.2,0\n";
    return text;
}

std::string legendText(const Histogram1D& histogram, const PlotStyle& style, bool isAlone) {
    std::string text = nameOfHistogram(histogram);
    if (style.hasStatistics && !isAlone)
        text += "  (" + entriesText(histogram) + " entries, mean " + roundedText(histogram.mean()) + ", RMS " +
                roundedText(histogram.rms()) + ")";
    return quotedForGnuplot(text);
}

/// What one histogram adds to the plot command.
std::vector<std::string> layersOf(const Histogram1D& histogram, std::size_t position, const PlotStyle& style,
                                  bool isAlone) {
    const std::string colour = " linecolor rgb " + colourOf(position);
    const std::string steps = "data index " + textOf(static_cast<double>(2 * position));
    const std::string bars = "data index " + textOf(static_cast<double>(2 * position + 1));
    const std::string title =
        style.hasLegend ? " title " + legendText(histogram, style, isAlone) : std::string(" notitle");
    std::vector<std::string> layers;
    if (isAlone)
        layers.push_back(steps + " using 1:2 with filledcurves closed fillcolor rgb " + colourOf(position) +
                         " fillstyle transparent solid 0.18 noborder notitle");
    layers.push_back(steps + " using 1:2 with lines linewidth 3 dashtype " + dashOf(position) + colour + title);
    layers.push_back(bars + " using 1:3:(0):($4-$3) with vectors nohead linewidth 2" + colour + " notitle");
    return layers;
}

std::string plotCommand(const std::vector<HistogramPtr>& histograms, const PlotStyle& style) {
    std::string text = "plot";
    for (std::size_t i = 0; i < histograms.size(); ++i)
        for (const std::string& layer : layersOf(*histograms[i], i, style, histograms.size() == 1))
            text += (text.size() > 4 ? ", \\\n     " : " ") + layer;
    return text + "\n";
}

}  // namespace

std::string plotData(const std::vector<HistogramPtr>& histograms, const PlotFrame& frame, const PlotStyle& style) {
    std::string text =
        "# For each histogram: its outline as x, height; then centre, height, height - error, "
        "height + error.\n";
    for (const HistogramPtr& histogram : histograms) {
        text += outline(*histogram, frame, style.hasLogY ? frame.yLow : 0.0) + "\n\n";
        text += errorBars(*histogram, frame) + "\n\n";
    }
    return text;
}

std::string plotScript(const std::vector<HistogramPtr>& histograms, const PlotFrame& frame, const PlotStyle& style) {
    const bool hasBox = style.hasStatistics && histograms.size() == 1;
    std::string text =
        "# Draws the picture again: run gnuplot on this file in its folder.\n"
        "reset\n"
        "set encoding utf8\n"
        "set border 31 linewidth 2\n"
        "set tics in scale 1.2,0.6\n"
        "set mxtics\nset mytics\n"
        "set grid xtics ytics linetype 1 linewidth 1 linecolor rgb '#E0E0E0'\n"
        "set lmargin 11\nset rmargin 3.5\nset bmargin 3.5\n";
    text += std::string("set key noenhanced ") + (hasBox ? "top left Left reverse" : "top right") + " samplen 2\n";
    text += axes(frame, style);
    if (hasBox)
        text += statisticsBox(*histograms.front());
    text += "data = " + quotedForGnuplot("./" + style.baseName + ".dat") + "\n";
    const std::string terminals[] = {"png", "svg"};
    for (const std::string& ending : terminals) {
        text += ending == "png" ? "set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,24' rounded\n"
                                : "set terminal svg noenhanced size 1600,1000 font 'DejaVu Sans,24' rounded "
                                  "background rgb 'white'\n";
        text += "set output " + quotedForGnuplot("./" + style.baseName + "." + ending) + "\n";
        text += plotCommand(histograms, style);
        text += "set output\n";
    }
    return text;
}

}  // namespace velmorak
