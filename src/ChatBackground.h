#pragma once

#include <QColor>
#include <QDateTime>
#include <QString>

class QTextBrowser;

/// Frame, background and scroll bars of the conversations.
///
/// An image takes precedence over a colour, and a colour over the theme. The image is stretched
/// over the view's frame and does not scroll with the text. Whether its file exists is not checked.
class ChatBackground final
{
public:
    /// `image` is the path of a file, or empty. An invalid `color` means none.
    ChatBackground(const QString &theme, const QString &image, const QColor &color);

    /// Applies the background to `view`, unless the view already has it and the image's file is
    /// unmodified. Polishing hundreds of views for each new tab would take seconds.
    void applyTo(QTextBrowser &view) const;

    /// Returns the style sheet declaration that stretches the image at `path` over a whole widget.
    /// All characters of the path are escaped.
    [[nodiscard]] static QString imageDeclaration(const QString &path);

private:
    [[nodiscard]] bool isAppliedTo(const QTextBrowser &view) const;

    QColor paletteColor;
    QString sheet;
    bool hasImage = false;
    QDateTime imageTime;
};
