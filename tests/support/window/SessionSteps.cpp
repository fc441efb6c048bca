#include "SessionSteps.h"

SessionSteps::SessionSteps(WindowSession &watched)
    : session(watched)
{
    static_cast<void>(session.takeSent());
    for (auto tab = session.probe.tabs().cbegin(); tab != session.probe.tabs().cend(); ++tab)
        counts.insert(tab.key(), session.probe.lines(tab.key()).size());
}

SessionSteps::Lines SessionSteps::lines() const
{
    Lines found;
    for (auto count = counts.cbegin(); count != counts.cend(); ++count) {
        const QStringList fresh = session.probe.lines(count.key()).mid(*count);
        if (!fresh.isEmpty())
            found.insert(count.key(), fresh);
    }
    return found;
}

QStringList SessionSteps::sent() const
{
    return session.takeSent();
}
