#pragma once

#include <QObject>

/// Applies Fusion's light palette, which the style sheets are written for, on every desktop.
///
/// The style itself returns a dark palette on a dark desktop, and the desktop's link colours.
class LightPalette final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LightPalette)

public:
    /// Applies the palette to the application, its tool tips and all widget classes, and again
    /// whenever the desktop changes it. Create it before any widget.
    LightPalette();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void apply();

    bool isApplying = false;
};
