#include "kinds.h"

#include "shared/FileInputs.h"
#include "shared/OwnTypesOpener.h"

#include <hepmc/EventTable.h>

#include <utility>

namespace velmorak {
namespace {

/// Reads events of generators.
class HepMcTableKind : public Source {
public:
    std::string name() const override { return "HepMcTable"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;
    bool tellsColumns() const override { return true; }
};

}  // namespace

std::string HepMcTableKind::summary() const {
    return "Reads events of generators, HepMC or Les Houches, with lists of their particles.";
}

std::string HepMcTableKind::notes() const {
    return R"(Each event is a row. `pdg`, `status`, `mother`, `px`, `py`, `pz`, `e` and `m` are lists with a value for each
particle; `mother` is the position of a particle's first mother in these lists, counted from 0, or -1. Momenta, energies and
masses are in GeV. See [Event files](../hepmc.md).)";
}

Ports HepMcTableKind::ports(const ValueTexts&) const {
    return fileTablePorts(
        {fileListInput("Events in HepMC ASCII (version 2 or 3) or Les Houches format, plain or compressed with gzip, "
                       "bzip2 or zip; the format is recognised by content")},
        "A row for each event.");
}

std::unique_ptr<TableReader> HepMcTableKind::open(const Arguments& arguments, RunContext& context) const {
    return openFilesOf(filesOf(arguments, context), eventTableOpener(), arguments, context);
}

std::vector<std::filesystem::path> HepMcTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(filesOf(arguments, context));
}

std::shared_ptr<const FileOpener> eventTableOpener() {
    return openerWith(openEvents);
}

std::unique_ptr<Kind> makeHepMcTable() {
    return std::make_unique<HepMcTableKind>();
}

}  // namespace velmorak
