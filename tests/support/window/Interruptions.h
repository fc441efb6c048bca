#pragma once

class WindowSession;

/// Makes an event occur in the window and returns whether it has occurred.
using Interruption = bool (*)(WindowSession &session);

/// Events that can occur while a dialog or menu is open.
namespace Interruptions {

/// The server closes the connection.
[[nodiscard]] bool dropLink(WindowSession &session);

/// Many users join #a and send messages to it and to the user.
[[nodiscard]] bool flood(WindowSession &session);

/// All tabs except "Server" are closed.
[[nodiscard]] bool closeTabs(WindowSession &session);

/// The user is kicked from #a and closes the tabs.
[[nodiscard]] bool loseChannel(WindowSession &session);

} // namespace Interruptions
