#pragma once

#include <velmorak/FileFormat.h>

#include <memory>
#include <string>
#include <vector>

/// Factories of the collection's kinds. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeAidaTable();
std::unique_ptr<Kind> makeCsvTable(const FileFormats& formats);
std::unique_ptr<Kind> makeGeant4Histogram();
std::unique_ptr<Kind> makeHepMcTable();
std::unique_ptr<Kind> makeRandomTable();
std::unique_ptr<Kind> makeRootTable();
std::unique_ptr<Kind> makeYodaObjects();

/// AidaHistogram, AidaProfile, AidaPoints and AidaFunction.
std::vector<std::unique_ptr<Kind>> makeAidaObjects();

/// RootHistogram, RootProfile, RootPoints and RootValue.
std::vector<std::unique_ptr<Kind>> makeRootObjects();

/// Table.
std::unique_ptr<Kind> makeAnyTable(const FileFormats& formats);

std::unique_ptr<FileFormat> makeAidaFormat();
std::unique_ptr<FileFormat> makeCsvFormat();
std::unique_ptr<FileFormat> makeRootFormat();
std::unique_ptr<FileFormat> makeYodaFormat();
/// HepMC 2 and 3, and Les Houches events.
std::vector<std::unique_ptr<FileFormat>> makeEventFormats();
/// Ntuples, and histograms with profiles.
std::vector<std::unique_ptr<FileFormat>> makeGeant4Formats();

/// Openers for the formats. An object is a path, or empty for the only one in the file.
std::shared_ptr<const FileOpener> aidaTableOpener(const std::string& object);
/// For values with a header, separated by commas.
std::shared_ptr<const FileOpener> csvTableOpener();
std::shared_ptr<const FileOpener> rootTableOpener(const std::string& object, const std::vector<std::string>& columns);
std::shared_ptr<const FileOpener> eventTableOpener();

}  // namespace velmorak
