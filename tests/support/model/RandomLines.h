#pragma once

#include "RandomSource.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Lines of a server by chance, of which most have a meaning, mixed into a recording.
///
/// Nicks and channels come from small pools, so that they meet. The random must outlive it.
class RandomLines final
{
public:
    /// `recording` is what a server said to alice, from the start; it begins anew at its end.
    RandomLines(RandomSource &source, const QStringList &recording)
        : random(source)
        , recorded(recording)
    {
    }

    /// One line by chance, without its end. It speaks to `ownNick`, and of it.
    [[nodiscard]] QString line(const QString &ownNick);
    /// Bytes of any value, with a line end behind them.
    [[nodiscard]] QByteArray garbage();
    /// Up to five lines of all kinds, each with its end.
    [[nodiscard]] QByteArray bytes(const QString &ownNick);

    [[nodiscard]] QString nick() { return random.pick(nicks()); }
    [[nodiscard]] QString channel() { return random.pick(channels()); }
    [[nodiscard]] QString text();

private:
    [[nodiscard]] static QStringList nicks();
    [[nodiscard]] static QStringList channels();
    [[nodiscard]] QString someone(const QString &ownNick);
    [[nodiscard]] QString names(const QString &ownNick);
    [[nodiscard]] QString ofUsers(const QString &ownNick);
    [[nodiscard]] QString numeric(const QString &ownNick);
    [[nodiscard]] QString listing(const QString &ownNick);
    [[nodiscard]] QString whois(const QString &ownNick);

    /// The next line of the recording, as if it had been said to `ownNick`.
    [[nodiscard]] QString nextRecorded(const QString &ownNick);

    RandomSource &random;
    const QStringList recorded;
    qsizetype place = 0;
};
