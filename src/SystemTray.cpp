#include "SystemTray.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QSystemTrayIcon>

using namespace Qt::StringLiterals;

namespace {

QMenu *createMenu(QMainWindow &window)
{
    auto *menu = new QMenu(&window);
    menu->addAction(QSystemTrayIcon::tr("Show Velmora"), &window, [&window] {
        window.showNormal();
        SystemTray::bringToFront(window);
    });
    menu->addSeparator();
    menu->addAction(QSystemTrayIcon::tr("Quit"), qApp, &QCoreApplication::quit);
    return menu;
}

} // namespace

namespace SystemTray {

QSystemTrayIcon *create(QMainWindow &window)
{
    const QIcon icon(u":/icons/app_icon"_s);
    QGuiApplication::setWindowIcon(icon);
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return nullptr;
    auto *tray = new QSystemTrayIcon(&window);
    tray->setIcon(icon);
    tray->setToolTip(u"Velmora"_s);
    tray->show();
    QObject::connect(tray, &QSystemTrayIcon::activated, &window,
                     [&window](QSystemTrayIcon::ActivationReason reason) {
                         if (reason != QSystemTrayIcon::Trigger
                             && reason != QSystemTrayIcon::DoubleClick)
                             return;
                         bringToFront(window);
                     });
    tray->setContextMenu(createMenu(window));
    return tray;
}

void bringToFront(QMainWindow &window)
{
    if (window.isMinimized())
        window.showNormal();
    window.raise();
    window.activateWindow();
}

} // namespace SystemTray
