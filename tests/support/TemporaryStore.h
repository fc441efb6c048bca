#pragma once

#include <QTemporaryDir>

/// An empty settings store in a temporary folder, deleted with the object.
///
/// Create one before the first `QSettings` of the process and call `clear` before each test. It
/// also sets the names of the application and the organisation, which determine the path of a
/// store.
class TemporaryStore final
{
    Q_DISABLE_COPY_MOVE(TemporaryStore)

public:
    TemporaryStore();

    /// Removes all stored values.
    void clear();

    /// Returns the path of the settings file, which exists once a value has been written.
    [[nodiscard]] QString fileName() const;

private:
    QTemporaryDir folder;
};
