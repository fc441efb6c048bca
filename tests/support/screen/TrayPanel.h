#pragma once

#include "Child.h"
#include "VirtualScreen.h"

#include <QPoint>

/// A system tray (trayer) in the upper right corner of a virtual screen. Programs embed their icons
/// with the XEmbed protocol.
class TrayPanel final
{
    Q_DISABLE_COPY_MOVE(TrayPanel)

public:
    /// The screen must outlive the object.
    explicit TrayPanel(const VirtualScreen &virtualScreen);

    /// Starts the tray. Returns false if that fails. It may not accept icons yet; see
    /// `waitForIcon`.
    [[nodiscard]] bool start();

    /// Returns the centre of the program's blue icon; null if there is none.
    [[nodiscard]] QPoint icon() const;
    [[nodiscard]] bool waitForIcon() const;

private:
    const VirtualScreen &screen;
    Child panel;
};
