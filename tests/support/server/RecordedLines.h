#pragma once

#include <QString>
#include <QStringList>

/// The lines of a recording: what a real server said to alice. Empty if there is no such file among
/// the tests' data.
[[nodiscard]] QStringList recordedLines(const QString &fileName);
