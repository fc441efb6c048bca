#include "DrawnText.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QWidget>

namespace {

// Records the texts and draws nothing.
class TextRecorder final : public QPaintEngine
{
public:
    TextRecorder()
        : QPaintEngine(AllFeatures)
    {
    }

    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState &) override {}
    void drawPath(const QPainterPath &) override {}
    void drawPolygon(const QPointF *, int, PolygonDrawMode) override {}
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}
    void drawTextItem(const QPointF &, const QTextItem &item) override
    {
        texts.append(item.text());
    }
    [[nodiscard]] Type type() const override { return User; }

    QStringList texts;
};

// A paint device with the size and the resolution of a widget.
class RecordingDevice final : public QPaintDevice
{
public:
    explicit RecordingDevice(const QWidget &widget)
        : size(widget.size())
        , resolution(widget.logicalDpiX())
    {
    }

    [[nodiscard]] QPaintEngine *paintEngine() const override { return &recorder; }

    mutable TextRecorder recorder;

protected:
    [[nodiscard]] int metric(PaintDeviceMetric which) const override
    {
        switch (which) {
        case PdmWidth:
            return size.width();
        case PdmHeight:
            return size.height();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return resolution;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(which);
        }
    }

private:
    QSize size;
    int resolution;
};

} // namespace

namespace DrawnText {

QStringList of(QWidget &widget)
{
    RecordingDevice device(widget);
    widget.render(&device);
    return device.recorder.texts;
}

QString joined(QWidget &widget)
{
    return of(widget).join(QString());
}

} // namespace DrawnText
