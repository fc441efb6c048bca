#pragma once

#include <QProcess>
#include <QProcessEnvironment>

/// A program that runs for as long as we need it: it is asked to end when the object goes, and it
/// is ended by the system should we be killed before that.
class Child final : public QProcess
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Child)

public:
    explicit Child(QObject *parent = nullptr);
    ~Child() override;

    /// Starts the program; false if it could not be started.
    [[nodiscard]] bool launch(const QString &program, const QStringList &arguments = {});

    /// Returns our environment without the way to the desktop of the person who runs the tests.
    /// Programs keep their files in `home`.
    [[nodiscard]] static QProcessEnvironment privateEnvironment(const QString &home);

    /// Asks the program to end and ends it by force when it does not.
    void stop();
};
