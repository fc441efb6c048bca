#pragma once

#include <QObject>

/// Applies the light colours that the style sheets are written for, whatever the desktop's are.
///
/// They are Fusion's. The style itself returns dark ones on a dark desktop, and leaves the colours
/// of links to the desktop.
class LightPalette final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LightPalette)

public:
    /// Applies the colours to the application, its tool tips and all widget classes, and restores
    /// them while the object lives, when the desktop changes them. Create one before any widget.
    LightPalette();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void apply();

    bool isApplying = false;
};
