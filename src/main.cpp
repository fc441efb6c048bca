#include "MainWindow.h"

#include <QApplication>
#include <QSettings>
#include <QStyleFactory>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    // These two names decide where every QSettings of the program lies.
    QApplication::setApplicationName(u"Velmora"_s);
    QApplication::setApplicationVersion(u"2.0"_s);
    QApplication::setOrganizationName(u"Velmora"_s);
    // Desktops find name and icon of the window and of its notifications by that of the entry.
    QGuiApplication::setDesktopFileName(QStringLiteral(VELMORA_ID));
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));

    QSettings settings;
    if (!settings.contains(u"theme"_s))
        settings.setValue(u"theme"_s, u"light"_s);

    MainWindow window;
    window.show();
    return QApplication::exec();
}
