#include "TrayPanel.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int Height = 32;
constexpr int Width = 200;

// Between the lightest and the darkest colour of the icon.
constexpr QRgb IconColour = qRgb(0x18, 0x7a, 0xe8);
constexpr int IconDistance = 50;
constexpr int IconSize = 10; // An icon is larger than this.

} // namespace

TrayPanel::TrayPanel(const VirtualScreen &virtualScreen)
    : screen(virtualScreen)
{
}

bool TrayPanel::start()
{
    panel.setProcessEnvironment(screen.environment());
    const QStringList arguments{u"--edge"_s,      u"top"_s,
                                u"--align"_s,     u"right"_s,
                                u"--widthtype"_s, u"pixel"_s,
                                u"--width"_s,     QString::number(Width),
                                u"--height"_s,    QString::number(Height)};
    return panel.launch(u"trayer"_s, arguments);
}

QPoint TrayPanel::icon() const
{
    const QRect corner(screen.screenshot().width() - Width, 0, Width, Height);
    const QRect found = screen.findPixels(corner, IconColour, IconDistance);
    return found.width() > IconSize && found.height() > IconSize ? found.center() : QPoint();
}

bool TrayPanel::waitForIcon() const
{
    return screen.waitFor([this] { return !icon().isNull(); });
}
