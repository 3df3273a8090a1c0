#include "ReportPdf.h"

#include <velmorak/Failure.h>
#include <velmorak/SystemReason.h>

#include <filesystem>
#include <fstream>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

std::string pdfBeside(const std::string& page) {
    const std::string ending = ".html";
    return (page.ends_with(ending) ? page.substr(0, page.size() - ending.size()) : page) + ".pdf";
}

/// @param file has the name in the results folder, below which it may be in a folder of its own.
fs::path resultsFolderOf(const fs::path& file, const fs::path& name) {
    fs::path folder = file.parent_path();
    const fs::path below = name.lexically_normal().parent_path();
    if (below.is_absolute()) {
        return folder;
    }
    for (auto part = below.begin(); part != below.end(); ++part) {
        folder = folder.parent_path();
    }
    return folder;
}

std::vector<PdfPage> pagesOf(const PdfContents& contents, const fs::path& folder, RunContext& context) {
    std::vector<PdfPage> pages;
    for (const PictureInRun& picture : contents.inRun) {
        try {
            pages.push_back(pdfPageOf(folder / picture.file, picture.style));
        } catch (const Failure& failure) {
            context.warn("pdf: the picture of \"" + picture.plot + "\" is left out: " + failure.what());
        }
    }
    for (PlotPicture picture : contents.ofReport) {
        if (!pages.empty()) {
            picture.style.width = pages.front().style.width;
            picture.style.height = pages.front().style.height;
        }
        pages.push_back(pdfPageOf(picture));
    }
    return pages;
}

}  // namespace

void writeReportPdf(const std::string& page, const PdfContents& contents, RunContext& context) {
    const std::string name = pdfBeside(page);
    context.writeResult(name, [&](const fs::path& file) {
        const std::vector<PdfPage> pages = pagesOf(contents, resultsFolderOf(file, name), context);
        if (pages.empty()) {
            throw Failure("pdf", "no picture of the run can be read, so there is no PDF");
        }
        const std::string text = drawnPdf(pages, context);
        errno = 0;
        std::ofstream out(file, std::ios::binary);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.close();
        if (!out) {
            throw Failure("\"" + finalPath(file, name) + "\" cannot be written" + systemReason(errno));
        }
    });
}

}  // namespace velmorak
