#pragma once

class QMainWindow;
class QSystemTrayIcon;

/// The program's icon, also in the system tray.
namespace SystemTray {

/// Sets the application icon and creates a tray icon that raises `window` and can quit the program.
///
/// Returns null if the system has no tray. The icon and its menu belong to `window`.
[[nodiscard]] QSystemTrayIcon *create(QMainWindow &window);

/// Restores `window` if it is minimised, then raises and activates it.
void bringToFront(QMainWindow &window);

} // namespace SystemTray
