#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class QSettings;

/// The preferences of the user, each stored under its member's name. The initial values are the
/// defaults.
///
/// Three have an effect: `timestampFormat` formats the time of each new row, `chatBgImage` and
/// `chatBgColor` are the background of the conversations. The others are only loaded, edited and
/// stored.
struct Preferences
{
    QString chatBgImage; ///< Path of the image; empty for none.
    QColor chatBgColor;  ///< Invalid for none. An image has precedence.
    QString timestampFormat = QStringLiteral("[HH:mm:ss]");
    QFont chatFont{QStringLiteral("Monaco"), 12};
    int emojiSize = 20;
    bool autoReconnect = true;
    int reconnectDelay = 10; ///< Seconds.
    int reconnectAttempts = 0;
    int pingInterval = 60; ///< Seconds.
    int pingTimeout = 45;  ///< Seconds.
    bool acceptInvalidSsl = false;
    QString logPath;
    bool logEnabled = false;

    /// Reads all members from `settings`. What is not stored becomes its default; only the font
    /// then stays as it is.
    ///
    /// A stored background colour that is black or not a colour is removed from `settings`: black
    /// can be chosen, but not kept.
    void loadFrom(QSettings &settings);

    void saveTo(QSettings &settings) const;
};
