#pragma once

#include <QMap>
#include <QString>
#include <QTabBar>

class QStyleOptionTab;
class QStylePainter;
class QTimer;

/// A tab bar that marks tabs which want attention.
///
/// The text of a marked tab is bold and changes its colour twice a second until the mark is taken
/// off. A mark belongs to an index and not to a tab: when tabs come, go or move, it stays at its
/// index and shows on whatever tab lies there, or on none.
class HighlightTabBar final : public QTabBar
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HighlightTabBar)

public:
    struct HighlightInfo
    {
        bool highlighted = false;
        /// The text is in the blink colour at present.
        bool blinkOn = false;
        /// The tab's own blink timer, a child of the bar; null while the tab does not blink.
        QTimer *timer = nullptr;
    };

    explicit HighlightTabBar(QWidget *parent);

    /// Takes the blink colour that goes with `theme`, one for "dark" and one for every other name.
    /// Tabs that blink go on in their rhythm.
    void setTheme(const QString &theme);

    /// Marks the tab at `index` and lets it blink, first in the blink colour. Does nothing if the
    /// tab is marked already or there is none.
    void highlightTab(int index);

    /// Takes the mark off the tab at `index`. Does nothing if there is no such tab or no mark.
    void unhighlightTab(int index);

    /// True if `index` is marked, whether or not a tab lies there.
    [[nodiscard]] bool isHighlighted(int index) const;

    /// Gives `index` a blink timer of its own, in place of the one that it may have. To mark a tab,
    /// call `highlightTab`: nothing blinks without a mark.
    void startBlinking(int index);

    /// Ends the blink timer of `index`, if there is one, and leaves the mark.
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
