#pragma once

#include <velmorak/Failure.h>
#include <velmorak/StateBytes.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velmorak {

/// Sums of the weights of the fills with equal keys.
struct CategorySums {
    std::int64_t entries = 0;
    double w = 0.0;
    double ww = 0.0;
};

/// Weights by key, in the order in which the keys appear.
/// Threads: one filler at a time; give each chunk its own, then merge in chunk order.
template <typename Key>
class Categories {
public:
    static constexpr std::size_t maxCount = 100'000;

    /// A NaN is counted and left out.
    /// @throws Failure if there are too many keys.
    void fill(const Key& key, double weight) {
        if (std::isnan(weight)) {
            ++left;
            return;
        }
        CategorySums& sums = sumsOf(key);
        ++sums.entries;
        sums.w += weight;
        sums.ww += weight * weight;
    }
    void merge(const Categories& other) {
        for (std::size_t i = 0; i < other.keys.size(); ++i) {
            CategorySums& sums = sumsOf(other.keys[i]);
            sums.entries += other.all[i].entries;
            sums.w += other.all[i].w;
            sums.ww += other.all[i].ww;
        }
        left += other.left;
    }

    std::int64_t nans() const { return left; }
    const Key& key(std::size_t position) const { return keys[position]; }
    const CategorySums& sums(std::size_t position) const { return all[position]; }
    /// @return positions in the order of appearance, or with ascending keys.
    std::vector<std::size_t> order(bool isSorted) const {
        std::vector<std::size_t> ordered(keys.size());
        std::iota(ordered.begin(), ordered.end(), std::size_t{0});
        if (isSorted) {
            std::sort(ordered.begin(), ordered.end(),
                      [this](std::size_t one, std::size_t other) { return keys[one] < keys[other]; });
        }
        return ordered;
    }

    void save(StateWriter& writer) const {
        writer.number(left);
        writer.number<std::uint64_t>(keys.size());
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if constexpr (std::is_same_v<Key, std::string>) {
                writer.text(keys[i]);
            } else {
                writer.number(keys[i]);
            }
            writer.number(all[i].entries);
            writer.number(all[i].w);
            writer.number(all[i].ww);
        }
    }
    void load(StateReader& reader) {
        *this = {};
        left = reader.number<std::int64_t>();
        for (std::size_t count = reader.length(4 * sizeof(double)); count > 0; --count) {
            CategorySums& sums = sumsOf(keyFrom(reader));
            sums.entries = reader.number<std::int64_t>();
            sums.w = reader.number<double>();
            sums.ww = reader.number<double>();
        }
    }

private:
    static Key keyFrom(StateReader& reader) {
        if constexpr (std::is_same_v<Key, std::string>) {
            return reader.text();
        } else {
            return reader.number<Key>();
        }
    }
    CategorySums& sumsOf(const Key& key) {
        const auto [place, isNew] = positions.try_emplace(key, keys.size());
        if (isNew) {
            if (keys.size() == maxCount) {
                throw Failure("expression", "it has more than " + std::to_string(maxCount) + " different values");
            }
            keys.push_back(key);
            all.emplace_back();
        }
        return all[place->second];
    }

    std::vector<Key> keys;
    std::vector<CategorySums> all;
    std::unordered_map<Key, std::size_t> positions;
    std::int64_t left = 0;
};

}  // namespace velmorak
