#pragma once

#include <QMap>
#include <QString>
#include <QTabBar>

class QStyleOptionTab;
class QStylePainter;
class QTimer;

/// A tab bar that highlights tabs.
///
/// The text of a highlighted tab is bold and its colour blinks. Intended: a highlight belongs to an
/// index and not to a tab. It stays at its index when tabs are added, removed or moved.
class HighlightTabBar final : public QTabBar
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HighlightTabBar)

public:
    struct HighlightInfo
    {
        bool highlighted = false;
        /// True while the text has the blink colour.
        bool blinkOn = false;
        /// Blink timer, a child of the bar; null while the tab does not blink.
        QTimer *timer = nullptr;
    };

    explicit HighlightTabBar(QWidget *parent);

    /// Sets the blink colour of `theme`: one for "dark" and one for any other name. Does not
    /// restart the blink timers.
    void setTheme(const QString &theme);

    /// Highlights the tab at `index`, starting in the blink colour. Does nothing if it is already
    /// highlighted or `index` is out of range.
    void highlightTab(int index);

    /// Removes the highlight of the tab at `index`. Does nothing if it has none or `index` is out
    /// of range.
    void unhighlightTab(int index);

    /// Returns true if `index` is highlighted, also if it is out of range.
    [[nodiscard]] bool isHighlighted(int index) const;

    /// Starts the blink timer of `index`, or restarts it. Has no visible effect without a
    /// highlight; call `highlightTab` instead.
    void startBlinking(int index);

    /// Stops the blink timer of `index`, if any. Keeps the highlight.
    void stopBlinking(int index);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void blink(int index);
    void drawTab(QStylePainter &painter, const QStyleOptionTab &option);
    void drawHighlightedTab(QStylePainter &painter, QStyleOptionTab option, bool blinkOn);

    QMap<int, HighlightInfo> highlights;
    QString currentTheme = QStringLiteral("light");
};
