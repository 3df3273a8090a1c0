#include "run/pass/ColumnUse.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmorak {
namespace {

using Columns = std::vector<bool>;

void unite(Columns& some, const Columns& others) {
    for (std::size_t i = 0; i < some.size(); ++i) {
        some[i] = some[i] || others[i];
    }
}

class ColumnUse {
public:
    ColumnUse(RunState& state, SourceSet& sources, OperatorChain& chain);

    void findUsed();
    void apply();

private:
    void markFor(std::size_t position);
    Columns neededBy(std::size_t position, std::size_t parent) const;
    const Columns& inputOf(const Operator::Parent& parent) const;
    void add(const Operator::Parent& parent, const Columns& needed);
    const RowOperation* onlyReaderOf(std::size_t segment) const;
    void applyBounds();

    RunState& state;
    SourceSet& sources;
    OperatorChain& chain;
    std::vector<Columns> ofOperators;  ///< Used columns of what each operator yields.
    std::vector<Columns> ofSegments;   ///< The same for the sources.
};

ColumnUse::ColumnUse(RunState& state, SourceSet& sources, OperatorChain& chain)
    : state(state), sources(sources), chain(chain) {
    for (std::size_t segment = 0; segment < sources.size(); ++segment) {
        ofSegments.emplace_back(sources.schema(segment).size(), chain.size() == 0);
    }
    for (std::size_t i = 0; i < chain.size(); ++i) {
        const Operator& op = chain.at(i);
        const auto& check = op.parents.front().check;
        ofOperators.emplace_back(check ? check->schema().size() : 0, !op.hasChild);
    }
}

void ColumnUse::findUsed() {
    for (std::size_t i = chain.size(); i-- > 0;) {
        if (!chain.at(i).isDropped) {
            markFor(i);
        }
    }
}

void ColumnUse::markFor(std::size_t position) {
    Operator& op = chain.at(position);
    for (std::size_t i = 0; i < op.parents.size(); ++i) {
        Columns needed;
        if (const auto error = state.call(op.node, [&] { needed = neededBy(position, i); })) {
            state.fail(op.node, *error);
            chain.drop(position);
            return;
        }
        add(op.parents[i], needed);
    }
}

Columns ColumnUse::neededBy(std::size_t position, std::size_t parent) const {
    const Operator& op = chain.at(position);
    const std::size_t columns = inputOf(op.parents[parent]).size();
    Columns needed(columns, false);
    if (op.accumulation) {
        op.accumulation->markColumns(needed);
    } else {
        op.parents[parent].operation->markColumns(ofOperators[position], needed);
    }
    if (needed.size() != columns) {
        throw std::logic_error("the kind marks " + std::to_string(needed.size()) + " columns of a table that has " +
                               std::to_string(columns));
    }
    return needed;
}

const Columns& ColumnUse::inputOf(const Operator::Parent& parent) const {
    return parent.op ? ofOperators[*parent.op] : ofSegments[parent.firstSegment];
}

void ColumnUse::add(const Operator::Parent& parent, const Columns& needed) {
    unite(parent.op ? ofOperators[*parent.op] : ofSegments[parent.firstSegment], needed);
}

void ColumnUse::apply() {
    for (std::size_t segment = 0; segment < sources.size(); ++segment) {
        sources.selectColumns(segment, ofSegments[segment]);
    }
    for (std::size_t i = 0; i < chain.size(); ++i) {
        for (Operator::Parent& parent : chain.at(i).parents) {
            if (parent.check) {
                parent.check->selectColumns(ofOperators[i]);
            }
        }
    }
    applyBounds();
}

/// @return what the only operator that reads from the segment does with its rows; null if there are several, or if it
///         gathers them.
const RowOperation* ColumnUse::onlyReaderOf(std::size_t segment) const {
    const RowOperation* only = nullptr;
    for (std::size_t i = 0; i < chain.size(); ++i) {
        const Operator& op = chain.at(i);
        if (op.isDropped || !op.sees(segment) || op.parentFor(segment).op) {
            continue;
        }
        if (only || !op.parentFor(segment).operation) {
            return nullptr;
        }
        only = op.parentFor(segment).operation.get();
    }
    return only;
}

void ColumnUse::applyBounds() {
    for (std::size_t segment = 0; segment < sources.size(); ++segment) {
        if (const auto* const operation = dynamic_cast<const BoundedOperation*>(onlyReaderOf(segment))) {
            sources.leaveOutBeyond(segment, operation->bounds());
        }
    }
}

}  // namespace

void selectColumns(RunState& state, SourceSet& sources, OperatorChain& chain) {
    ColumnUse use(state, sources, chain);
    use.findUsed();
    use.apply();
}

}  // namespace velmorak
