#pragma once

#include <QByteArray>
#include <QHash>
#include <QPoint>
#include <QSize>
#include <QString>

/// A virtual keyboard and pointer for a Wayland compositor that supports the protocols
/// virtual-keyboard-unstable-v1 and wlr-virtual-pointer-unstable-v1.
///
/// The seat has a keyboard and a pointer from `open` until the object is destroyed. Every operation
/// waits until the compositor has handled it and returns false if that fails.
class WaylandInput final
{
    Q_DISABLE_COPY_MOVE(WaylandInput)

public:
    WaylandInput() = default;
    ~WaylandInput();

    /// Connects to the compositor. `size` is the size of the screen.
    [[nodiscard]] bool open(const QString &socketPath, QSize size);

    /// Types ASCII text.
    [[nodiscard]] bool type(const QString &text);
    /// Presses a key: an ASCII character, "Return", "Escape", "Tab", "Up" or "Down", optionally
    /// with the prefix "ctrl+" or "alt+".
    [[nodiscard]] bool press(const QString &key);
    [[nodiscard]] bool moveTo(QPoint point);
    /// Clicks with the left (1), middle (2) or right (3) mouse button.
    [[nodiscard]] bool click(QPoint point, int button);

private:
    using Id = quint32;

    [[nodiscard]] Id bind(const QByteArray &interface, quint32 version);
    [[nodiscard]] bool sendKeymap();
    [[nodiscard]] bool pressKey(quint32 code, quint32 modifiers);
    [[nodiscard]] bool send(Id object, quint32 request, const QByteArray &arguments = {},
                            int descriptor = -1);
    [[nodiscard]] bool sync();
    [[nodiscard]] bool readEvents();
    void handleEvent(Id object, quint32 event, const QByteArray &arguments);

    int connection = -1;
    QSize screen;
    QByteArray received;
    QHash<QByteArray, quint32> globals; ///< Names by interface.
    Id lastId = 1;                      ///< 1 is the display.
    Id registry = 0;
    Id pointer = 0;
    Id keyboard = 0;
    Id answered = 0; ///< The last callback that the compositor has answered.
    bool failed = false;
};
