#pragma once

#include "Child.h"
#include "VirtualScreen.h"

#include <QPoint>

/// A tray (trayer) in the upper right corner of a virtual screen, into which programs put their
/// icons by the X protocol for that.
class TrayPanel final
{
    Q_DISABLE_COPY_MOVE(TrayPanel)

public:
    /// The screen must outlive the object.
    explicit TrayPanel(const VirtualScreen &shownOn);

    /// Starts the tray; false if it does not come up. That it also takes icons in is for the caller
    /// to find out.
    [[nodiscard]] bool start();

    /// The middle of what is blue in the tray, as our icon is; null if nothing is.
    [[nodiscard]] QPoint icon() const;
    /// Waits until there is an icon.
    [[nodiscard]] bool waitForIcon() const;

private:
    const VirtualScreen &screen;
    Child panel;
};
