#include "isolate/States.h"

#include "isolate/ChunkCodec.h"
#include "isolate/Codec.h"
#include "isolate/Tables.h"

#include <velmorak/StateBytes.h>

#include <utility>

namespace velmorak::isolation {
namespace {

/// An accumulation in a helper process; destroyed there with this.
struct Place {
    Place(std::shared_ptr<Helper> helper, std::uint64_t number) : helper(std::move(helper)), number(number) {}
    ~Place() { dropNow(helper, number); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    const std::shared_ptr<Helper> helper;
    const std::uint64_t number;
};

/// A state in the helper process, which makes it when it is first needed.
class IsolatedState : public AccumulatorState {
public:
    explicit IsolatedState(std::shared_ptr<const Place> whole)
        : accumulation(std::move(whole)), number(accumulation->helper->newNumber()) {}
    ~IsolatedState() override { accumulation->helper->drop(number); }

    void fill(const Chunk& chunk) override;
    void merge(AccumulatorState& other) override;
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;
    void finish(Results& results);

private:
    void address(Question& question) const;

    const std::shared_ptr<const Place> accumulation;
    const std::uint64_t number;
};

void IsolatedState::address(Question& question) const {
    question.message().number(accumulation->number);
    question.message().number(number);
}

void IsolatedState::fill(const Chunk& chunk) {
    Question question(accumulation->helper, Op::Fill);
    address(question);
    writeChunk(question.message(), chunk);
    question.ask();
}

void IsolatedState::merge(AccumulatorState& other) {
    Question question(accumulation->helper, Op::Merge);
    address(question);
    question.message().number(dynamic_cast<IsolatedState&>(other).number);
    question.ask();
}

void IsolatedState::save(StateWriter& writer) const {
    Question question(accumulation->helper, Op::Save);
    address(question);
    question.message().text(writer.kind());
    MessageReader answer = question.ask();
    writer.rest(answer.view());
}

void IsolatedState::load(StateReader& reader) {
    Question question(accumulation->helper, Op::LoadState);
    address(question);
    question.message().text(reader.kind());
    question.message().text(reader.rest());
    question.ask();
}

void IsolatedState::finish(Results& results) {
    Question question(accumulation->helper, Op::Finish, nullptr, &results);
    address(question);
    question.ask();
}

/// @param Base Accumulation, or a class of it that runs tell apart.
template <typename Base>
class IsolatedAccumulation : public Base {
public:
    explicit IsolatedAccumulation(std::shared_ptr<const Place> place) : place(std::move(place)) {}

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<IsolatedState>(place); }
    void markColumns(std::vector<bool>& needed) const override {
        Question question(place->helper, Op::MarkStateColumns);
        question.message().number(place->number);
        write(question.message(), needed);
        MessageReader answer = question.ask();
        needed = readFlags(answer);
    }
    void finish(AccumulatorState& state, Results& results) override {
        dynamic_cast<IsolatedState&>(state).finish(results);
    }

private:
    const std::shared_ptr<const Place> place;
};

}  // namespace

std::unique_ptr<Accumulation> prepareAccumulation(const std::shared_ptr<Helper>& helper, std::uint64_t number,
                                                  Question& question) {
    MessageReader answer = question.ask();
    const bool isMade = answer.flag();
    const bool isOrdered = answer.flag();
    if (!isMade) {
        return nullptr;
    }
    auto place = std::make_shared<const Place>(helper, number);
    if (isOrdered) {
        return std::make_unique<IsolatedAccumulation<OrderedAccumulation>>(std::move(place));
    }
    return std::make_unique<IsolatedAccumulation<Accumulation>>(std::move(place));
}

}  // namespace velmorak::isolation
