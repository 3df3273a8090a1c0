#include <velmorak/StateBytes.h>

#include "table/Checksum.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Kind.h>
#include <velmorak/Points.h>

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>
#include <stdexcept>

namespace velmorak {
namespace {

/// Has a member of every kind that a state may have.
struct Full : AccumulatorState {
    void fill(const Chunk&) override {}
    void merge(AccumulatorState&) override {}
    void save(StateWriter& writer) const override {
        writer.version(2);
        writer.number(rows);
        writer.number(isOver);
        writer.number(sum);
        writer.text(name);
        writer.list(values);
        writer.list(counts);
        writer.object(*points);
    }
    void load(StateReader& reader) override {
        reader.version(2);
        rows = reader.count();
        isOver = reader.number<bool>();
        sum = reader.number<double>();
        name = reader.text();
        values = reader.list();
        counts = reader.list<std::vector<std::uint16_t>>();
        points = reader.object<Points>();
    }

    std::int64_t rows = 0;
    bool isOver = false;
    double sum = 0.0;
    std::string name;
    std::vector<double> values;
    std::vector<std::uint16_t> counts;
    std::shared_ptr<const Points> points = std::make_shared<Points>(1, std::vector<Measurement>());
};

Full filled() {
    Full state;
    state.rows = 123456789012;
    state.isOver = true;
    state.sum = std::bit_cast<double>(std::uint64_t{0xfff8'0000'0000'1234});
    state.name = std::string("a\0\n\"\xff", 5);
    state.values = {-0.0, std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::infinity()};
    state.counts = {1, 65535};
    auto points = std::make_shared<Points>(2, std::vector<Measurement>{{.value = 1.5}, {.value = 2.5}});
    points->title = "Some";
    state.points = points;
    return state;
}

std::string failureOf(const std::function<void()>& call) {
    try {
        call();
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

std::string resealed(std::string bytes) {
    bytes.resize(bytes.size() - sizeof(std::uint64_t));
    const std::uint64_t sum = checksum(bytes);
    return bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);
}

TEST(StateBytes, readBackToTheLastBit) {
    const std::string bytes = savedState(filled(), "Full");
    Full state;
    loadState(state, bytes, "Full");
    EXPECT_EQ(std::bit_cast<std::uint64_t>(state.sum), 0xfff8'0000'0000'1234U);
    EXPECT_EQ(state.name, filled().name);
    EXPECT_TRUE(std::signbit(state.values.front()));
    EXPECT_EQ(state.points->title, "Some");
    EXPECT_EQ(savedState(state, "Full"), bytes);
}

TEST(StateBytes, areLittleEndianAfterAMarkAVersionAndTheKind) {
    StateWriter writer("Ab");
    writer.version(3);
    writer.number<std::uint16_t>(0x1234);
    const std::string bytes = writer.sealed();
    EXPECT_EQ(bytes.substr(0, bytes.size() - 8), std::string("VelState\1\0\0\0\2\0\0\0\0\0\0\0Ab\3\0\0\0\x34\x12", 28));
}

TEST(StateBytes, ofAnotherKindOrVersionAreRefusedByName) {
    const std::string bytes = savedState(filled(), "Full");
    Full state;
    EXPECT_EQ(failureOf([&] { loadState(state, bytes, "Empty"); }),
              "the saved state is one of \"Full\", not of \"Empty\"");
    StateWriter later("Full");
    later.version(3);
    EXPECT_EQ(failureOf([&] { loadState(state, later.sealed(), "Full"); }),
              "the saved state of \"Full\" has version 3, but the kind reads only versions up to 2");
    std::string layout = bytes;
    layout[8] = 9;
    EXPECT_EQ(failureOf([&] { loadState(state, resealed(layout), "Full"); }),
              "the saved state of \"Full\" has layout 9, but this version reads only layout 1");
}

TEST(StateBytes, ofAKindWithoutSaveAreRefusedByName) {
    struct Foreign : AccumulatorState {
        void fill(const Chunk&) override {}
        void merge(AccumulatorState&) override {}
    } foreign;
    EXPECT_EQ(failureOf([&] { savedState(foreign, "Foreign"); }),
              "the state of \"Foreign\" cannot be saved, because its accumulator has no save");
    EXPECT_EQ(failureOf([&] { loadState(foreign, StateWriter("Foreign").sealed(), "Foreign"); }),
              "the state of \"Foreign\" cannot be loaded, because its accumulator has no load");
}

TEST(StateBytes, mayNotClaimMoreThanTheyHold) {
    for (const std::uint64_t claim : {std::uint64_t{2}, std::uint64_t{1} << 40U, ~std::uint64_t{0}}) {
        StateWriter writer("Full");
        writer.number(claim);
        writer.number<std::uint8_t>(0);
        const std::string bytes = writer.sealed();
        EXPECT_THROW(StateReader(bytes, "Full").text(), Failure) << claim;
        EXPECT_THROW(StateReader(bytes, "Full").list(), Failure) << claim;
        EXPECT_THROW(StateReader(bytes, "Full").object(), Failure) << claim;
        EXPECT_THROW(StateReader(bytes, "Full").length(8), Failure) << claim;
    }
}

TEST(StateBytes, mayNotBeFollowedByOthers) {
    StateWriter writer("Full");
    filled().save(writer);
    writer.number<std::uint8_t>(0);
    Full state;
    EXPECT_EQ(failureOf([&] { loadState(state, writer.sealed(), "Full"); }),
              "the saved state of \"Full\" is damaged: bytes follow its end");
}

TEST(StateBytes, mayNotHoldAnotherClassOfObject) {
    StateWriter writer("Full");
    writer.object(Points(1, {}));
    const std::string bytes = writer.sealed();
    EXPECT_EQ(failureOf([&] { StateReader(bytes, "Full").object<FunctionObject>(); }),
              "the saved state of \"Full\" is damaged: an object is of another class");
}

TEST(StateBytes, thatAreDamagedAreRefused) {
    const std::string bytes = savedState(filled(), "Full");
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        Full state;
        EXPECT_THROW(loadState(state, bytes.substr(0, size), "Full"), Failure) << size;
    }
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        std::string damaged = bytes;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        Full state;
        EXPECT_THROW(loadState(state, damaged, "Full"), Failure) << at;
    }
}

TEST(StateBytes, withARightChecksumGiveAStateOrAFailure) {
    const std::string bytes = savedState(filled(), "Full");
    std::mt19937 random(4);
    for (int i = 0; i < 20000; ++i) {
        std::string damaged = bytes.substr(0, i % 3 == 0 ? 28 + random() % (bytes.size() - 28) : bytes.size());
        damaged[20 + random() % (damaged.size() - 20)] = static_cast<char>(random());
        Full state;
        try {
            loadState(state, resealed(damaged), "Full");
        } catch (const Failure& failure) {
            EXPECT_STRNE(failure.what(), "");
        }
    }
}

}  // namespace
}  // namespace velmorak
