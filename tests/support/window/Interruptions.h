#pragma once

class WindowSession;

/// Makes something happen to the window; true once it has.
using Interruption = bool (*)(WindowSession &session);

/// What can happen while a menu or a dialog waits for the user.
namespace Interruptions {

/// The server ends the link.
[[nodiscard]] bool dropLink(WindowSession &session);

/// Many people join #a and speak, there and to the user.
[[nodiscard]] bool flood(WindowSession &session);

/// All tabs that can be closed are.
[[nodiscard]] bool closeTabs(WindowSession &session);

/// The user is kicked from #a, and closes what is left of it.
[[nodiscard]] bool loseChannel(WindowSession &session);

} // namespace Interruptions
