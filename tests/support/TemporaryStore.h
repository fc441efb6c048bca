#pragma once

#include <QTemporaryDir>

/// An empty settings store of the test's own, in a temporary folder that goes with the object.
///
/// Make one before the first `QSettings` of the process and call `clear` before each test. It sets
/// the application's and the organisation's name too, since they decide where a store lies.
class TemporaryStore final
{
    Q_DISABLE_COPY_MOVE(TemporaryStore)

public:
    TemporaryStore();

    /// Forgets everything that is stored.
    void clear();

    /// Path of the file in which the store lies once something was written.
    [[nodiscard]] QString fileName() const;

private:
    QTemporaryDir folder;
};
