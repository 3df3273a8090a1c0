#include "AidaWriter.h"
#include "CsvWriter.h"
#include "Plot.h"
#include "Print.h"
#include "Report.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Output");
    registry.add(std::make_unique<velmorak::PlotKind>());
    registry.add(std::make_unique<velmorak::AidaWriterKind>());
    registry.add(std::make_unique<velmorak::CsvWriterKind>());
    registry.add(std::make_unique<velmorak::PrintKind>());
    registry.add(std::make_unique<velmorak::ReportKind>());
}
