#pragma once

#include <QByteArray>
#include <QString>

/// Returns the content of a file; empty if it cannot be read.
[[nodiscard]] QByteArray readFile(const QString &path);
