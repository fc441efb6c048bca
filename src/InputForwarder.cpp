#include "InputForwarder.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>

namespace {

bool isInput(const QKeyEvent &key)
{
    if (key.matches(QKeySequence::Paste))
        return true;
    // Windows reports AltGr as Ctrl+Alt.
    constexpr Qt::KeyboardModifiers AltGr = Qt::ControlModifier | Qt::AltModifier;
    const Qt::KeyboardModifiers modifiers = key.modifiers() & (AltGr | Qt::MetaModifier);
    const bool isText = !modifiers || modifiers == AltGr;
    return isText && !key.text().isEmpty() && key.text().front().isPrint();
}

} // namespace

InputForwarder::InputForwarder(QWidget &source, QLineEdit &inputLine)
    : QObject(&source)
    , line(inputLine)
{
    source.installEventFilter(this);
}

bool InputForwarder::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !line.isVisible()
        || !isInput(*static_cast<QKeyEvent *>(event)))
        return QObject::eventFilter(watched, event);
    line.setFocus();
    QCoreApplication::sendEvent(&line, event);
    return true;
}
