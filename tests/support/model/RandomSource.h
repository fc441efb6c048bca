#pragma once

#include <QtGlobal>

#include <random>

/// A random number generator. A seed gives the same numbers on every system.
class RandomSource final
{
public:
    explicit RandomSource(quint32 seed)
        : generator(seed)
    {
    }

    /// Returns a number from 0 to `count` - 1. `count` must be at least 1.
    [[nodiscard]] int below(int count)
    {
        return static_cast<int>(generator() % static_cast<quint32>(count));
    }
    /// Returns true with this probability.
    [[nodiscard]] bool chance(int percent) { return below(100) < percent; }
    /// Returns an element of `list`, which must not be empty.
    template <typename List>
    [[nodiscard]] auto pick(const List &list)
    {
        return list.at(below(static_cast<int>(list.size())));
    }

private:
    // The standard defines the numbers of std::mt19937, but not those of its distributions.
    std::mt19937 generator;
};
