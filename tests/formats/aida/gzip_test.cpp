#include "aida/containers/Decompressor.h"
#include "support.h"

#include <gmock/gmock.h>

#include <random>

namespace velmorak {
namespace {

struct Unpacked {
    std::string bytes;
    std::string damage;
    std::uint64_t position = 0;
};

Unpacked unpacked(io::Decompressor& unpacker, std::size_t piece) {
    Unpacked all;
    std::string bytes(piece, '\0');
    for (std::size_t count = 1; count > 0;) {
        count = unpacker.read(bytes.data(), bytes.size());
        all.bytes.append(bytes, 0, count);
    }
    all.damage = unpacker.damage();
    all.position = unpacker.position();
    return all;
}

class Gzip : public AidaFiles {
protected:
    /// Right before damage one may have got a few bytes further than the other.
    void expectAsZlib(const std::string& packed, std::size_t piece, const std::string& about) const {
        constexpr std::size_t maxFurther = 300;
        const auto file = fileWith(packed);
        const Unpacked expected = unpacked(*io::openDeflated(file, io::Packing::Gzip), piece);
        const Unpacked made = unpacked(*io::openGzip(file), piece);
        EXPECT_EQ(made.damage, expected.damage) << about;
        EXPECT_EQ(made.position, expected.position) << about;
        EXPECT_GE(made.bytes.size(), expected.bytes.size()) << about;
        EXPECT_LE(made.bytes.size(), expected.bytes.size() + (expected.damage.empty() ? 0 : maxFurther)) << about;
        EXPECT_TRUE(made.bytes.starts_with(expected.bytes)) << about;
    }

    static std::string numbers(std::size_t count, std::mt19937_64& random) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            text += "<entry value=\"" + std::to_string(random() % 100000) + "\"/>";
        }
        return text;
    }
};

TEST_F(Gzip, ofOneMemberAndOfSeveralIsRead) {
    std::mt19937_64 random(1);
    const std::string text = numbers(20000, random);
    EXPECT_EQ(unpacked(*io::openGzip(fileWith(gzipped(text))), 1000).bytes, text);
    const Unpacked three = unpacked(*io::openGzip(fileWith(gzipped(text) + gzipped("") + gzipped("end"))), 1U << 20U);
    EXPECT_EQ(three.bytes, text + "end");
    EXPECT_EQ(three.damage, "");
}

TEST_F(Gzip, isReadAsZlibReadsItInPiecesOfAnyLength) {
    std::mt19937_64 random(2);
    const std::string whole = gzipped(numbers(30000, random));
    for (const std::size_t piece : {1U, 7U, 512U, 65536U, 1U << 22U}) {
        for (const std::string& rest : {std::string(), std::string(100, '\0'), std::string("\x1F"), gzipped("more")}) {
            expectAsZlib(whole + rest, piece, std::to_string(piece) + " bytes a piece");
        }
    }
}

TEST_F(Gzip, thatIsDamagedIsReadAsZlibReadsIt) {
    std::mt19937_64 random(3);
    const std::string whole = gzipped(numbers(3000, random)) + gzipped(numbers(300, random));
    for (int i = 0; i < 2000 && !HasFailure(); ++i) {
        std::string bytes = whole;
        for (std::size_t change = 0; change < 1 + random() % 2; ++change) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        if (i % 4 == 0) {
            bytes.resize(random() % bytes.size());
        }
        if (!bytes.empty()) {
            expectAsZlib(bytes, 1000 + random() % 100000, "damage " + std::to_string(i));
        }
    }
}

TEST_F(Gzip, thatEndsTooEarlyIsReadAsZlibReadsIt) {
    std::mt19937_64 random(4);
    const std::string whole = gzipped(numbers(200, random));
    for (std::size_t length = 1; length < whole.size() && !HasFailure(); ++length) {
        expectAsZlib(whole.substr(0, length), 100, std::to_string(length) + " bytes");
    }
}

}  // namespace
}  // namespace velmorak
