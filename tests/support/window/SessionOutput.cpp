#include "SessionOutput.h"

SessionOutput::SessionOutput(WindowSession &windowSession)
    : session(windowSession)
{
    session.discardSent();
    for (auto tab = session.probe.tabs().cbegin(); tab != session.probe.tabs().cend(); ++tab)
        counts.insert(tab.key(), session.probe.lines(tab.key()).size());
}

SessionOutput::Lines SessionOutput::lines() const
{
    Lines found;
    for (auto count = counts.cbegin(); count != counts.cend(); ++count) {
        const QStringList fresh = session.probe.lines(count.key()).mid(*count);
        if (!fresh.isEmpty())
            found.insert(count.key(), fresh);
    }
    return found;
}

QStringList SessionOutput::sent() const
{
    return session.readSent();
}
