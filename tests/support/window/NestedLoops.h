#pragma once

#include "ModalAnswers.h"
#include "WindowSession.h"

#include <QList>

#include <functional>

/// A window with a session, in which each of the program's nested loops can be opened.
///
/// Make a `TemporaryStore` first.
class NestedLoopFixture final
{
    Q_DISABLE_COPY_MOVE(NestedLoopFixture)

public:
    NestedLoopFixture() = default;

    /// Connects as "me", who is an operator in #a with alice, and lets the server tell of #b.
    [[nodiscard]] bool joinChannels();

    /// Queues what is to happen inside the loop, once the windows before it have their answers.
    void awaitDialog();
    void awaitMenu();

    WindowSession session;
    ModalAnswers answers;
    std::function<void(QWidget *shown)> inside; ///< Called with the window that runs the loop.
};

/// One of the places where the program waits for its user in an event loop of its own.
struct NestedLoop
{
    const char *name = nullptr;
    /// Opens it in the way of a user; the call returns when the loop has ended.
    void (*open)(NestedLoopFixture &fixture) = nullptr;
    /// Answers it as one who wants what it offers.
    void (*answer)(QWidget *shown) = nullptr;
    /// Whether that has come of it.
    bool (*isDone)(const NestedLoopFixture &fixture) = nullptr;

    /// Each way to each of them, those through others included.
    [[nodiscard]] static const QList<NestedLoop> &all();
};
