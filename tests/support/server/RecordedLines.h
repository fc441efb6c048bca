#pragma once

#include <QString>
#include <QStringList>

/// Returns the lines of a recording in tests/data, which a real server sent to alice. Empty if
/// there is no such file.
[[nodiscard]] QStringList recordedLines(const QString &fileName);
