#pragma once

#include <QColor>
#include <QDateTime>
#include <QString>

class QSettings;
class QTextBrowser;

/// Frame, background and scroll bars of the conversations.
///
/// An image wins over a colour, and a colour over the theme. The image is stretched over the whole
/// frame of the view and does not scroll with the text. Whether its file exists is not looked at.
class ChatBackground final
{
public:
    /// `image` is the path of a file, or empty; an invalid `color` stands for none.
    ChatBackground(const QString &theme, const QString &image, const QColor &color);

    /// Applies the background to `view`, unless the view has it already and the image's file has
    /// not been modified since. Polishing hundreds of views for each new tab would take seconds.
    void applyTo(QTextBrowser &view) const;

    /// The colour that `settings` holds, or an invalid one. Black can be chosen, but does not
    /// outlive the session: it is taken out of `settings`, as is what is no colour at all.
    [[nodiscard]] static QColor loadColor(QSettings &settings);

    /// The declaration that stretches the image at `path` over the whole of a widget. No character
    /// of the path can end it.
    [[nodiscard]] static QString imageDeclaration(const QString &path);

private:
    [[nodiscard]] bool isAppliedTo(const QTextBrowser &view) const;

    QColor paletteColor;
    QString sheet;
    bool hasImage = false;
    QDateTime imageTime;
};
