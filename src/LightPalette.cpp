#include "LightPalette.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <QScopedValueRollback>
#include <QStyleHints>
#include <QToolTip>

#include <array>

namespace {

struct RoleColors
{
    QPalette::ColorRole role = QPalette::NoRole;
    QRgb enabled = 0;
    QRgb disabled = 0;
};

constexpr QRgb Black = 0xff000000;
constexpr QRgb White = 0xffffffff;
constexpr QRgb Grey = 0xffefefef;
constexpr QRgb DisabledText = 0xffbebebe;

constexpr std::array Roles
{
    RoleColors{QPalette::WindowText, Black, DisabledText}, RoleColors{QPalette::Button, Grey, Grey},
            RoleColors{QPalette::Light, White, White},
            RoleColors{QPalette::Midlight, 0xffcacaca, 0xffcacaca},
            RoleColors{QPalette::Dark, 0xff9f9f9f, 0xffbebebe},
            RoleColors{QPalette::Mid, 0xffb8b8b8, 0xffb8b8b8},
            RoleColors{QPalette::Text, Black, DisabledText},
            RoleColors{QPalette::BrightText, White, White},
            RoleColors{QPalette::ButtonText, Black, DisabledText},
            RoleColors{QPalette::Base, White, Grey}, RoleColors{QPalette::Window, Grey, Grey},
            RoleColors{QPalette::Shadow, 0xff767676, 0xffb1b1b1},
            RoleColors{QPalette::Highlight, 0xff308cc6, 0xff919191},
            RoleColors{QPalette::HighlightedText, White, White},
            RoleColors{QPalette::Link, 0xff0000ff, 0xff0000ff},
            RoleColors{QPalette::LinkVisited, 0xffff00ff, 0xffff00ff},
            RoleColors{QPalette::AlternateBase, 0xfff7f7f7, 0xfff7f7f7},
            RoleColors{QPalette::ToolTipBase, 0xffffffdc, 0xffffffdc},
            RoleColors{QPalette::ToolTipText, Black, Black},
            RoleColors{QPalette::PlaceholderText, 0x80000000, 0x80000000},
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
            RoleColors{QPalette::Accent, 0xff308cc6, 0xff919191},
#endif
};

// Returns a palette with every role set, since Qt takes the others from the desktop's palette.
QPalette lightPalette()
{
    QPalette palette;
    for (const RoleColors &colors : Roles) {
        palette.setColor(QPalette::All, colors.role, QColor::fromRgba(colors.enabled));
        palette.setColor(QPalette::Disabled, colors.role, QColor::fromRgba(colors.disabled));
    }
    return palette;
}

} // namespace

LightPalette::LightPalette()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QGuiApplication::styleHints()->setColorScheme(Qt::ColorScheme::Light);
#endif
    apply();
    qApp->installEventFilter(this);
}

bool LightPalette::eventFilter(QObject *watched, QEvent *event)
{
    const bool isPaletteChange =
            watched == qApp && event->type() == QEvent::ApplicationPaletteChange;
    if ((isPaletteChange || event->type() == QEvent::ThemeChange) && !isApplying)
        apply();
    return QObject::eventFilter(watched, event);
}

void LightPalette::apply()
{
    const QScopedValueRollback applying(isApplying, true);
    // Qt resets the palettes of widget classes, which a desktop theme may set, only when the
    // application's palette changes.
    QApplication::setPalette(QPalette());
    const QPalette palette = lightPalette();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}
