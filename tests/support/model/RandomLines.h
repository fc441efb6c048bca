#pragma once

#include "RandomSource.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Generates random server lines, most of them valid, mixed with the lines of a recording.
///
/// Nicks and channels come from small pools, so that lines refer to each other. The random source
/// must outlive the object.
class RandomLines final
{
public:
    /// `recording` holds a session's server lines with alice; it is repeated when it ends.
    RandomLines(RandomSource &source, const QStringList &recording)
        : random(source)
        , recorded(recording)
    {
    }

    /// Returns a random line without its line end, addressed to `ownNick`.
    [[nodiscard]] QString line(const QString &ownNick);
    /// Returns random bytes followed by a line end.
    [[nodiscard]] QByteArray garbage();
    /// Returns one to five lines of any kind, with their line ends.
    [[nodiscard]] QByteArray bytes(const QString &ownNick);

    [[nodiscard]] QString nick() { return random.pick(nicks()); }
    [[nodiscard]] QString channel() { return random.pick(channels()); }
    [[nodiscard]] QString text();

private:
    [[nodiscard]] static QStringList nicks();
    [[nodiscard]] static QStringList channels();
    [[nodiscard]] QString nickOrOwn(const QString &ownNick);
    [[nodiscard]] QString names(const QString &ownNick);
    [[nodiscard]] QString userMessage(const QString &ownNick);
    [[nodiscard]] QString numeric(const QString &ownNick);
    [[nodiscard]] QString listReply(const QString &ownNick);
    [[nodiscard]] QString whoisReply(const QString &ownNick);

    /// Returns the next line of the recording, with `ownNick` in place of alice.
    [[nodiscard]] QString nextRecorded(const QString &ownNick);

    RandomSource &random;
    const QStringList recorded;
    qsizetype nextIndex = 0;
};
