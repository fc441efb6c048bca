#pragma once

class QMainWindow;
class QSystemTrayIcon;

/// The program's place in the system tray, and its icon.
namespace SystemTray {

/// Gives the program its icon and, where the system has a tray, puts an icon there by which
/// `window` is brought to the front and the program ended.
///
/// The icon and its menu belong to `window`. Null is returned where there is no tray.
[[nodiscard]] QSystemTrayIcon *create(QMainWindow &window);

/// Restores `window` if it is minimised, raises and activates it.
void bringToFront(QMainWindow &window);

} // namespace SystemTray
