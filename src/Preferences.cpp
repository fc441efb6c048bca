#include "Preferences.h"

#include <QSettings>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace {

// Calls `visit` with each key and its member, in the order of their storage.
template <typename Visitor>
void visitAll(const Visitor &visit)
{
    visit(u"chatFont"_s, &Preferences::chatFont);
    visit(u"timestampFormat"_s, &Preferences::timestampFormat);
    visit(u"emojiSize"_s, &Preferences::emojiSize);
    visit(u"logEnabled"_s, &Preferences::logEnabled);
    visit(u"logPath"_s, &Preferences::logPath);
    visit(u"chatBgImage"_s, &Preferences::chatBgImage);
    visit(u"chatBgColor"_s, &Preferences::chatBgColor);
    visit(u"autoReconnect"_s, &Preferences::autoReconnect);
    visit(u"reconnectDelay"_s, &Preferences::reconnectDelay);
    visit(u"reconnectAttempts"_s, &Preferences::reconnectAttempts);
    visit(u"pingInterval"_s, &Preferences::pingInterval);
    visit(u"pingTimeout"_s, &Preferences::pingTimeout);
    visit(u"acceptInvalidSsl"_s, &Preferences::acceptInvalidSsl);
}

template <typename Value>
void readValue(const QSettings &settings, const QString &key, const Value &fallback, Value &value)
{
    value = settings.value(key, fallback).template value<Value>();
}

void readValue(const QSettings &settings, const QString &key, const QFont & /*fallback*/,
               QFont &font)
{
    const QString text = settings.value(key).toString();
    if (!text.isEmpty())
        font.fromString(text);
}

void readValue(QSettings &settings, const QString &key, const QColor &fallback, QColor &color)
{
    const QString text = settings.value(key).toString();
    color = text.isEmpty() ? fallback : QColor::fromString(text);
    if (text.isEmpty() || (color.isValid() && color != Qt::black))
        return;
    color = fallback;
    settings.setValue(key, u""_s);
}

template <typename Value>
QVariant toStored(const Value &value)
{
    return value;
}

QVariant toStored(const QFont &font)
{
    return font.toString();
}

QVariant toStored(const QColor &color)
{
    return color.isValid() ? color.name() : u""_s;
}

} // namespace

void Preferences::loadFrom(QSettings &settings)
{
    const Preferences defaults;
    visitAll([&](const QString &key, auto member) {
        readValue(settings, key, defaults.*member, this->*member);
    });
}

void Preferences::saveTo(QSettings &settings) const
{
    visitAll([&](const QString &key, auto member) {
        settings.setValue(key, toStored(this->*member));
    });
}
