#pragma once

#include <QtGlobal>

#include <random>

/// Chance that repeats itself: the same seed gives the same throws on every system.
class RandomSource final
{
public:
    explicit RandomSource(quint32 seed)
        : generator(seed)
    {
    }

    /// From 0 up to and without `count`, which is 1 at least.
    [[nodiscard]] int below(int count)
    {
        return static_cast<int>(generator() % static_cast<quint32>(count));
    }
    [[nodiscard]] bool chance(int percent) { return below(100) < percent; }
    /// One of `list`, which must not be empty.
    template <typename List>
    [[nodiscard]] auto pick(const List &list)
    {
        return list.at(below(static_cast<int>(list.size())));
    }

private:
    std::mt19937
            generator; // Its numbers are laid down, those of the standard's distributions aren't.
};
