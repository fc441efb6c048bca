#pragma once

#include "ModalAnswers.h"
#include "WindowSession.h"

#include <QList>

#include <functional>

/// A window with a session, where each of the program's nested event loops can be started.
///
/// Create a `TemporaryStore` first.
class NestedLoopFixture final
{
    Q_DISABLE_COPY_MOVE(NestedLoopFixture)

public:
    NestedLoopFixture() = default;

    /// Connects as "me", joins #a as an operator with alice, and receives a channel list with #b.
    [[nodiscard]] bool joinChannels();

    // Queue `inside` as the answer to the next dialog or menu, after the answers queued before.
    void awaitDialog();
    void awaitMenu();

    WindowSession session;
    ModalAnswers answers;
    std::function<void(QWidget *shown)> inside; ///< Called in the loop with its dialog or menu.
};

/// A dialog or menu that the program runs in a nested event loop.
struct NestedLoop
{
    const char *name = nullptr;
    /// Opens it as a user does; returns when the loop has ended.
    void (*open)(NestedLoopFixture &fixture) = nullptr;
    /// Accepts it.
    void (*answer)(QWidget *shown) = nullptr;
    /// Returns whether accepting it had its effect.
    bool (*isDone)(const NestedLoopFixture &fixture) = nullptr;

    /// Returns all of them, once for each way to open them.
    [[nodiscard]] static const QList<NestedLoop> &all();
};
